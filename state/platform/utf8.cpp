#include <state/platform/utf8.h>

#include <winsock2.h>

#include <windows.h>

namespace zelk
{
namespace
{

constexpr bool IsHighSurrogate(wchar_t unit) noexcept
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool IsLowSurrogate(wchar_t unit) noexcept
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// Systems before Vista would write a lone half of a pair as UTF-8 that is none.
std::wstring WithoutLoneSurrogates(std::wstring_view text)
{
    constexpr wchar_t REPLACEMENT = 0xFFFD;
    std::wstring result(text);
    for (std::size_t i = 0; i < result.size(); ++i)
    {
        if (IsHighSurrogate(result[i]) && i + 1 < result.size() && IsLowSurrogate(result[i + 1]))
            ++i;
        else if (IsHighSurrogate(result[i]) || IsLowSurrogate(result[i]))
            result[i] = REPLACEMENT;
    }
    return result;
}

/// Empty where the system cannot convert the text.
std::wstring UpperCase(std::string_view text)
{
    const std::wstring wide = FromUtf8(text);
    const int size = static_cast<int>(wide.size());
    std::wstring result(wide.size(), L'\0');
    const int length =
        size > 0 ? ::LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, wide.c_str(), size, result.data(), size) : 0;
    result.resize(static_cast<std::size_t>(length));
    return result;
}

} // namespace

std::string ToUtf8(std::wstring_view text)
{
    const std::wstring whole = WithoutLoneSurrogates(text);
    constexpr std::size_t MOST_BYTES_OF_A_UNIT = 3;
    std::string result(whole.size() * MOST_BYTES_OF_A_UNIT, '\0');
    const int size = static_cast<int>(whole.size());
    const int length = size > 0 ? ::WideCharToMultiByte(CP_UTF8, 0, whole.data(), size, result.data(),
                                                        static_cast<int>(result.size()), nullptr, nullptr)
                                : 0;
    result.resize(static_cast<std::size_t>(length));
    return result;
}

std::string ToUtf8(std::u16string_view text)
{
    return ToUtf8(std::wstring(text.begin(), text.end()));
}

std::wstring FromUtf8(std::string_view text)
{
    std::wstring result(text.size(), L'\0'); // a character never takes more units than bytes
    const int size = static_cast<int>(text.size());
    const int length = size > 0 ? ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(), size) : 0;
    result.resize(static_cast<std::size_t>(length));
    return result;
}

bool EqualIgnoringCase(std::string_view left, std::string_view right)
{
    if (left == right)
        return true;
    const std::wstring upperCase = UpperCase(left);
    return !upperCase.empty() && upperCase == UpperCase(right);
}

} // namespace zelk
