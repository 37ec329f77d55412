#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zelk
{

/// The generations of Windows by which the library ZELK_NM and this one choose their functions.
enum class BackEnd : std::uint8_t
{
    PRE_VISTA, ///< Windows 5.x
    VISTA      ///< Windows 6.0 and later
};

/// The Windows that runs.
struct Environment
{
    std::uint32_t majorVersion = 0; ///< the system's own number (RtlGetVersion), whatever a manifest says
    std::uint32_t minorVersion = 0;
    std::uint32_t build = 0;
    std::string servicePack;            ///< such as "Service Pack 2"; empty where there is none
    std::optional<std::string> product; ///< "ProductName" of the registry, such as "Windows 10 Pro"
    BackEnd backEnd = BackEnd::VISTA;   ///< follows from the version
    bool bootImage = false;             ///< runs from a pre-installation image (the key MiniNT or MyMiniNT exists)
    bool protocolBinding = false;       ///< whether protocols can be bound to adapters and unbound (INetCfg knows some)
    std::optional<bool> elevated;       ///< whether this process may change the configuration

    bool operator==(const Environment&) const = default;
};

} // namespace zelk
