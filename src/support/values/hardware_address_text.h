#pragma once

#include <cstddef>
#include <string_view>

#include <support/values/hex_text.h>

namespace velmor
{

/// Reads a hardware address: sections of at most two hexadecimal digits, each a byte, with any one character between
/// them. The bytes are 0 beforehand, and not to be used after a failure.
/// @return null, or the reason why the text is no hardware address.
template <class Char, std::size_t MOST_BYTES>
const char* ParseHardwareAddress(std::basic_string_view<Char> text, unsigned char (&bytes)[MOST_BYTES],
                                 unsigned int& count) noexcept
{
    constexpr unsigned int FEWEST_SECTIONS = 6;
    constexpr unsigned int DIGITS_PER_SECTION = 2;
    unsigned int section = 0;
    unsigned int digits = 0;
    for (const Char character : text)
    {
        const int value = HexDigitValue(character);
        if (value < 0)
        {
            digits = 0;
            if (++section == MOST_BYTES)
                return "Too many address sections in string";
            continue;
        }
        if (++digits > DIGITS_PER_SECTION)
            return "Too many hex digits in section";
        bytes[section] = static_cast<unsigned char>(bytes[section] * 16 + value);
    }
    count = section + 1;
    return count < FEWEST_SECTIONS ? "Too few address sections in string" : nullptr;
}

} // namespace velmor
