#include <support/values/hex_text.h>

#include <string>

namespace velmor
{

velmor::string HexPairs(const unsigned char* pBytes, std::size_t count)
{
    constexpr const wchar_t* DIGITS = L"0123456789ABCDEF";
    std::wstring sText;
    sText.reserve(count * 3);
    for (std::size_t i = 0; i < count; ++i)
    {
        if (i > 0)
            sText += L'-';
        sText += DIGITS[pBytes[i] >> 4];
        sText += DIGITS[pBytes[i] & 0xF];
    }
    return sText;
}

} // namespace velmor
