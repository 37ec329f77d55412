#include "system/utf8.h"

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{
namespace
{

std::wstring UpperCase(std::string_view text)
{
    const std::wstring sText = FromUtf8(text);
    const int length = static_cast<int>(sText.size());
    std::wstring result(sText.size(), L'\0');
    if (length > 0)
        ::LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, sText.c_str(), length, result.data(), length);
    return result;
}

} // namespace

bool EqualIgnoringCase(std::string_view left, std::string_view right)
{
    return UpperCase(left) == UpperCase(right);
}

} // namespace zelkctl
