#include "text.h"

#include <algorithm>

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
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return !IsContinuation(byte); }));
}

} // namespace zelkctl
