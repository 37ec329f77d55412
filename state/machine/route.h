#pragma once

#include <cstdint>
#include <optional>

#include <state/values/ip_prefix.h>

namespace zelk
{

/// Where a route stands.
enum class RouteStore : std::uint8_t
{
    ACTIVE,     ///< in use. It may be persistent too where the system does not say: see Route::store
    PERSISTENT, ///< stored, and not in use now
    BOTH        ///< in use and known to be stored
};

/// Who made a route.
enum class RouteOrigin : std::uint8_t
{
    MANUAL,
    WELL_KNOWN, ///< the system, for its own networks
    DHCP,
    ROUTER, ///< a router's advertisement
    SIX_TO_FOUR
};

/// How a route got into the table; of the system's many words those that tell something here.
enum class RouteProtocol : std::uint8_t
{
    OTHER,
    LOCAL,      ///< made by the system for an address of the adapter
    MANAGEMENT, ///< set by a person, a program or DHCP
    ICMP        ///< learned by redirection or router advertisement
};

/// One route of an adapter.
struct Route
{
    IpPrefix destination; ///< a network; of length 0 for a default route
    IpAddress nextHop;    ///< gateway; 0.0.0.0 or :: for a destination on the link
    /// From Vista on the route's own metric, to which the system adds the interface's; before, the whole. Of a route
    /// that is only persistent the stored one.
    std::optional<std::uint32_t> metric;
    /// IPv4: compared with "PersistentRoutes" and the adapter's "DefaultGateway" of the registry. Routes that were
    /// stored by other means (netsh from Vista on, every IPv6 route) cannot be told from unstored ones by any
    /// documented one: they are ACTIVE.
    RouteStore store = RouteStore::ACTIVE;
    std::optional<RouteOrigin> origin;     ///< absent before Vista and for a route that is only persistent
    std::optional<RouteProtocol> protocol; ///< absent for a route that is only persistent

    bool operator==(const Route&) const = default;
};

} // namespace zelk
