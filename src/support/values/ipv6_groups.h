#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <support/values/hex_text.h>

namespace velmor
{

using Ipv6Groups = std::array<std::uint16_t, 8>;

template <class Char>
constexpr bool IsDoubleColon(std::basic_string_view<Char> text, std::size_t i) noexcept
{
    return text[i] == ':' && i + 1 < text.size() && text[i + 1] == ':';
}

/// A single colon in the last place does not count.
template <class Char>
constexpr std::size_t CountSingleColons(std::basic_string_view<Char> text) noexcept
{
    std::size_t count = 0;
    for (std::size_t i = 0; i + 1 < text.size(); ++i)
    {
        if (IsDoubleColon(text, i))
            ++i;
        else if (text[i] == ':')
            ++count;
    }
    return count;
}

/// Spreads an IPv6 text over its eight groups, as the trace writes them. This is no validation: more than four digits
/// keep the low 16 bits, and what is neither digit nor colon is passed over, so that the digits of a scope suffix join
/// the last group. Rejected are texts of at most one character, with no single colon or with eight and more, and texts
/// that would need a ninth group.
template <class Char>
bool ParseIpv6Groups(std::basic_string_view<Char> text, Ipv6Groups& groups) noexcept
{
    if (text.size() <= 1)
        return false;

    const std::size_t singleColons = CountSingleColons(text);
    if (singleColons == 0 || singleColons >= groups.size())
        return false;

    groups.fill(0);
    std::size_t current = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (const int digit = HexDigitValue(text[i]); digit >= 0)
        {
            if (current >= groups.size())
                return false;
            groups[current] = static_cast<std::uint16_t>(groups[current] << 4 | digit);
        }
        else if (IsDoubleColon(text, i))
        {
            ++i;
            current += groups.size() - 1 - singleColons;
        }
        else if (text[i] == ':')
            ++current;
    }
    return true;
}

} // namespace velmor
