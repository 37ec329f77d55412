#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zelk
{

/// The two address families.
enum class Family : std::uint8_t
{
    IPV4,
    IPV6
};

inline constexpr Family FAMILIES[] = {Family::IPV4, Family::IPV6};

/// With what the paths of a family's settings begin, as in "ipv4.addresses".
inline std::string PathPrefixOf(Family family)
{
    return family == Family::IPV4 ? "ipv4." : "ipv6.";
}

/// "IPv4" or "IPv6".
constexpr const char* FamilyName(Family family) noexcept
{
    return family == Family::IPV4 ? "IPv4" : "IPv6";
}

/// Bits of an address of the family: 32 or 128.
constexpr std::uint8_t BitsOf(Family family) noexcept
{
    return family == Family::IPV4 ? 32 : 128;
}

/// An IPv4 or IPv6 address, without a zone. Ordered by family, then numerically.
class IpAddress
{
public:
    using Ipv4Bytes = std::array<std::uint8_t, 4>;
    using Ipv6Bytes = std::array<std::uint8_t, 16>;

    /// IPv4 0.0.0.0.
    constexpr IpAddress() noexcept = default;
    /// An IPv4 address, in network byte order.
    explicit IpAddress(const Ipv4Bytes& bytes) noexcept;
    /// An IPv6 address, in network byte order.
    explicit IpAddress(const Ipv6Bytes& bytes) noexcept;
    /// 0.0.0.0 or ::.
    static IpAddress Unspecified(Family family) noexcept;

    /// Strictly dotted decimal without leading zeros, or IPv6 text as RFC 4291 has it, a dotted tail included. Nothing
    /// may stand before or after, no zone and no brackets either. Nothing for any other text.
    static std::optional<IpAddress> Parse(std::string_view text) noexcept;

    [[nodiscard]] Family GetFamily() const noexcept { return m_family; }
    [[nodiscard]] bool IsIpv4() const noexcept { return m_family == Family::IPV4; }
    /// 4 or 16 bytes in network byte order.
    [[nodiscard]] std::span<const std::uint8_t> Bytes() const noexcept;

    [[nodiscard]] bool IsUnspecified() const noexcept; ///< 0.0.0.0 or ::
    [[nodiscard]] bool IsLoopback() const noexcept;    ///< 127.0.0.0/8 or ::1
    [[nodiscard]] bool IsMulticast() const noexcept;   ///< 224.0.0.0/4 or ff00::/8
    [[nodiscard]] bool IsLinkLocal() const noexcept;   ///< 169.254.0.0/16 or fe80::/10

    /// Dotted decimal, or for IPv6 the form of RFC 5952, such as "2001:db8::1" and "::ffff:192.0.2.1".
    [[nodiscard]] std::string ToText() const;

    std::strong_ordering operator<=>(const IpAddress&) const noexcept = default;

private:
    Family m_family = Family::IPV4;
    Ipv6Bytes m_bytes = {}; ///< of IPv4 the first four; the others stay 0
};

} // namespace zelk
