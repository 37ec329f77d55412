#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <state/values/ip_address.h>

namespace zelk
{

/// An address with the length of its prefix in bits: a network, where the bits behind the prefix are 0, or a host's
/// address on one, as in 192.0.2.20/24.
struct IpPrefix
{
    IpAddress address;
    std::uint8_t length = 0; ///< 0 to 32, or to 128 for IPv6

    /// "ADDRESS/LENGTH" in the form that IpAddress::Parse takes, with a decimal length that the family has. Nothing for
    /// any other text.
    static std::optional<IpPrefix> Parse(std::string_view text) noexcept;

    /// The same with all bits behind the prefix 0.
    [[nodiscard]] IpPrefix Network() const noexcept;
    /// Whether the address is of the same family and begins with the prefix.
    [[nodiscard]] bool Contains(const IpAddress& other) const noexcept;
    /// Such as "192.0.2.20/24".
    [[nodiscard]] std::string ToText() const;

    std::strong_ordering operator<=>(const IpPrefix&) const noexcept = default;
};

/// The IPv4 mask of a prefix length from 0 to 32, such as 255.255.255.0 of 24.
IpAddress MaskOf(std::uint8_t length) noexcept;

/// The prefix length that an IPv4 mask such as 255.255.255.0 stands for; nothing for IPv6 and for a mask with holes.
std::optional<std::uint8_t> PrefixLengthOfMask(const IpAddress& mask) noexcept;

} // namespace zelk
