#pragma once

#include <cstdint>
#include <string>

namespace zelk
{

/// The system's own number, whatever a manifest or a compatibility setting says.
struct SystemVersion
{
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t build = 0;
    std::string servicePack;

    [[nodiscard]] bool IsVistaOrLater() const noexcept { return major >= 6; }
};

SystemVersion GetSystemVersion();

} // namespace zelk
