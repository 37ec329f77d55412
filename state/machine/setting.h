#pragma once

#include <cstdint>
#include <limits>
#include <variant>

namespace zelk
{

/// A setting that is left to the system (DHCP, router, driver).
struct Automatic
{
    bool operator==(const Automatic&) const = default;
};

/// Left to the system or set to a value. In an optional, no value means that it could not be read.
template <class T>
using AutomaticOr = std::variant<Automatic, T>;

/// How long something stays valid from the moment of reading.
struct Lifetime
{
    static constexpr std::uint32_t INFINITE_SECONDS = std::numeric_limits<std::uint32_t>::max();

    std::uint32_t seconds = INFINITE_SECONDS;

    [[nodiscard]] bool IsInfinite() const noexcept { return seconds == INFINITE_SECONDS; }
    bool operator==(const Lifetime&) const = default;
};

} // namespace zelk
