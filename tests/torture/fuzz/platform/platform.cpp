// What the parsers ask the platform for, as far as it matters here. A wide character of this machine has 32 bits: one
// beyond U+FFFF is a single character, where on Windows it is two units.

#include <algorithm>
#include <codecvt>
#include <locale>

#include <state/platform/registry.h>
#include <state/platform/system_message.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

/// A text that cannot be converted becomes one replacement character, where on Windows its wrong parts do.
using Converter = std::wstring_convert<std::codecvt_utf8<wchar_t>>;

} // namespace

std::string ToUtf8(std::wstring_view text)
{
    return Converter("\xEF\xBF\xBD").to_bytes(text.data(), text.data() + text.size());
}

std::wstring FromUtf8(std::string_view text)
{
    return Converter("", L"\xFFFD").from_bytes(text.data(), text.data() + text.size());
}

std::string ToLower(std::string_view text)
{
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c | 0x20 : c; });
    return lower;
}

bool EqualIgnoringCase(std::string_view left, std::string_view right)
{
    return ToLower(left) == ToLower(right);
}

std::string SystemText(std::uint32_t code)
{
    return "error " + std::to_string(code);
}

} // namespace zelk
