#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace zelk
{

/// The GUID of an adapter, in the byte order of its text.
class Guid
{
public:
    /// All zero.
    Guid() = default;

    /// 32 hexadecimal digits in groups of 8, 4, 4, 4 and 12 joined by "-", in braces or without. Nothing for any other
    /// text.
    static std::optional<Guid> Parse(std::string_view text) noexcept;

    /// In braces and upper case, as the registry names keys.
    [[nodiscard]] std::string ToText() const;

    std::strong_ordering operator<=>(const Guid&) const noexcept = default;

private:
    friend struct std::hash<Guid>;

    std::array<std::uint8_t, 16> m_bytes = {};
};

} // namespace zelk

template <>
struct std::hash<zelk::Guid>
{
    std::size_t operator()(const zelk::Guid& guid) const noexcept;
};
