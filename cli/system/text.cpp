#include "system/text.h"

#include <algorithm>
#include <iterator>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{
namespace
{

constexpr char32_t REPLACEMENT = 0xFFFD;
constexpr std::string_view REPLACEMENT_UTF8 = "\xEF\xBF\xBD";

bool IsHighSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// Takes the first code point off the text.
char32_t TakeCodePoint(std::wstring_view& text)
{
    const char32_t first = text[0];
    text.remove_prefix(1);
    if (IsHighSurrogate(first) && !text.empty() && IsLowSurrogate(text[0]))
    {
        const char32_t second = text[0];
        text.remove_prefix(1);
        return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
    }
    return IsHighSurrogate(first) || IsLowSurrogate(first) ? REPLACEMENT : first;
}

char Continuation(char32_t codePoint, unsigned int shift)
{
    return static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F));
}

void AppendUtf8(std::string& text, char32_t codePoint)
{
    if (codePoint < 0x80)
    {
        text += static_cast<char>(codePoint);
        return;
    }
    if (codePoint < 0x800)
        text += static_cast<char>(0xC0 | (codePoint >> 6));
    else
    {
        if (codePoint < 0x10000)
            text += static_cast<char>(0xE0 | (codePoint >> 12));
        else
        {
            text += static_cast<char>(0xF0 | (codePoint >> 18));
            text += Continuation(codePoint, 12);
        }
        text += Continuation(codePoint, 6);
    }
    text += Continuation(codePoint, 0);
}

std::wstring UpperCase(const velmor::string& text)
{
    std::wstring result(text.c_str(), text.size());
    const int length = static_cast<int>(text.size());
    if (length > 0)
        ::LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, text.c_str(), length, result.data(), length);
    return result;
}

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Takes the first code point off the valid UTF-8 text.
char32_t TakeUtf8(std::string_view& text)
{
    const auto first = static_cast<unsigned char>(text[0]);
    char32_t codePoint = first < 0x80   ? first
                         : first < 0xE0 ? first & 0x1FU
                         : first < 0xF0 ? first & 0x0FU
                                        : first & 7U;
    text.remove_prefix(1);
    for (; !text.empty() && IsContinuation(text[0]); text.remove_prefix(1))
        codePoint = (codePoint << 6) | (static_cast<unsigned char>(text[0]) & 0x3FU);
    return codePoint;
}

/// Code points that take another place than one cell of a terminal.
struct WidthRange
{
    char32_t first, last;
    std::size_t width;
};
constexpr WidthRange WIDTHS[] = {
    {0x0300, 0x036F, 0},   // combining marks
    {0x1100, 0x115F, 2},   // Hangul letters
    {0x200B, 0x200F, 0},   // zero-width marks
    {0x2E80, 0xA4CF, 2},   // Chinese and Japanese scripts, Yi
    {0xAC00, 0xD7A3, 2},   // Hangul syllables
    {0xF900, 0xFAFF, 2},   // compatibility ideographs
    {0xFE00, 0xFE0F, 0},   // variation selectors
    {0xFE30, 0xFE6F, 2},   // vertical and small forms
    {0xFF00, 0xFF60, 2},   // full-width forms
    {0xFFE0, 0xFFE6, 2},   // full-width signs
    {0x1F300, 0x1FAFF, 2}, // pictographs
    {0x20000, 0x3FFFD, 2}, // rarer ideographs
};

std::size_t WidthOf(char32_t codePoint)
{
    const auto range = std::ranges::find_if(
        WIDTHS, [=](const WidthRange& known) { return codePoint >= known.first && codePoint <= known.last; });
    return range != std::end(WIDTHS) ? range->width : 1;
}

/// The C1 controls are U+0080 to U+009F: C2 and a byte of that range.
bool IsC1Control(std::string_view text)
{
    return text.size() > 1 && text[0] == '\xC2' && static_cast<unsigned char>(text[1]) < 0xA0;
}

bool IsC0Control(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20 || byte == '\x7F';
}

} // namespace

std::string ToUtf8(std::wstring_view text)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty())
        AppendUtf8(result, TakeCodePoint(text));
    return result;
}

std::string ToUtf8(const velmor::string& text)
{
    return ToUtf8(std::wstring_view(text.c_str(), text.size()));
}

velmor::string FromUtf8(std::string_view text)
{
    // A code point never takes more UTF-16 units than bytes.
    std::wstring result(text.size(), L'\0');
    const int size = static_cast<int>(text.size());
    const int length = size > 0 ? ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(), size) : 0;
    result.resize(static_cast<std::size_t>(length));
    return result;
}

bool EqualIgnoringCase(const velmor::string& left, const velmor::string& right)
{
    return UpperCase(left) == UpperCase(right);
}

std::string Printable(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty())
    {
        const bool bC1 = IsC1Control(text);
        if (bC1 || IsC0Control(text[0]))
            result += REPLACEMENT_UTF8;
        else
            result += text[0];
        text.remove_prefix(bC1 ? 2 : 1);
    }
    return result;
}

std::string Quoted(std::string_view text)
{
    return '"' + Printable(text) + '"';
}

std::size_t DisplayWidth(std::string_view text)
{
    std::size_t width = 0;
    while (!text.empty())
        width += WidthOf(TakeUtf8(text));
    return width;
}

} // namespace zelkctl
