#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zelk
{

/// A link-layer (MAC) address. It may be of any length; Ethernet's is of 6 bytes.
class HardwareAddress
{
public:
    /// Empty: no bytes.
    HardwareAddress() = default;
    explicit HardwareAddress(std::span<const std::uint8_t> bytes) : m_bytes(bytes.begin(), bytes.end()) {}

    /// 6 to 8 bytes of two hexadecimal digits each, all joined by "-", all by ":", or by nothing. Nothing for any other
    /// text.
    static std::optional<HardwareAddress> Parse(std::string_view text);

    [[nodiscard]] std::span<const std::uint8_t> Bytes() const noexcept { return m_bytes; }
    /// Upper-case pairs joined by "-", such as "02-00-5E-10-00-0A"; empty for an empty address.
    [[nodiscard]] std::string ToText() const;

    auto operator<=>(const HardwareAddress&) const noexcept = default;

private:
    std::vector<std::uint8_t> m_bytes;
};

/// Bytes as upper-case hexadecimal pairs with the separator between them.
std::string HexPairs(std::span<const std::uint8_t> bytes, std::string_view separator);

} // namespace zelk
