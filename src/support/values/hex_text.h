#pragma once

#include <cstddef>

#include <zelk_nm/string.h>

namespace velmor
{

/// The value of a hexadecimal digit of either case; -1 for any other character.
template <class Char>
constexpr int HexDigitValue(Char character) noexcept
{
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    return -1;
}

/// Each byte as two upper-case hexadecimal digits, joined by "-"; empty for no bytes.
velmor::string HexPairs(const unsigned char* pBytes, std::size_t count);

} // namespace velmor
