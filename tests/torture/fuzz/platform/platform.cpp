// What the parsers ask the platform for, as far as it matters here. A wide character of this machine has 32 bits:
// a character beyond U+FFFF is one of them, where on Windows it is two.

#include <algorithm>

#include <state/platform/registry.h>
#include <state/platform/system_message.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

constexpr wchar_t REPLACEMENT = 0xFFFD;

bool IsCharacter(wchar_t character)
{
    return character >= 0 && character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
}

/// Takes a character off the text, or one byte of what is none.
wchar_t TakeCharacter(std::string_view& text)
{
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t size = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    wchar_t character = size == 1 ? first : first & (0x7F >> size);
    for (std::size_t i = 1; i < std::min(size, text.size()); ++i)
        character = character << 6 | (text[i] & 0x3F);
    const std::string written = ToUtf8(std::wstring_view(&character, 1));
    const bool same = text.starts_with(written); // neither broken nor longer than need be
    text.remove_prefix(same ? written.size() : 1);
    return same ? character : REPLACEMENT;
}

} // namespace

std::string ToUtf8(std::wstring_view text)
{
    std::string result;
    for (const wchar_t given : text)
    {
        const wchar_t character = IsCharacter(given) ? given : REPLACEMENT;
        const int more = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
        constexpr int MARKS[] = {0, 0xC0, 0xE0, 0xF0};
        result += static_cast<char>(MARKS[more] | character >> 6 * more);
        for (int i = more - 1; i >= 0; --i)
            result += static_cast<char>(0x80 | (character >> 6 * i & 0x3F));
    }
    return result;
}

std::wstring FromUtf8(std::string_view text)
{
    std::wstring result;
    while (!text.empty())
        result += TakeCharacter(text);
    return result;
}

bool EqualIgnoringCase(std::string_view left, std::string_view right)
{
    return ToLower(left) == ToLower(right);
}

std::string ToLower(std::string_view text)
{
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c | 0x20 : c; });
    return lower;
}

std::string SystemText(std::uint32_t code)
{
    return "error " + std::to_string(code);
}

} // namespace zelk
