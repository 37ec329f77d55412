#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <state/machine/ip_settings.h>
#include <state/machine/route.h>
#include <state/machine/setting.h>
#include <state/values/hardware_address.h>
#include <state/values/ip_prefix.h>

namespace zelk
{

// A desired state is a partial picture of a machine. What is absent is left alone. A list means exactly its elements.

/// A static route that an adapter shall have.
struct DesiredRoute
{
    IpPrefix destination; ///< a network, but no default route: that is a gateway
    IpAddress nextHop;    ///< 0.0.0.0 or :: for a destination on the link
    std::optional<std::uint32_t> metric;
    /// ACTIVE until the next start, or PERSISTENT as well. Absent: a new route is persistent, one that exists stays as
    /// it is stored.
    std::optional<RouteStore> store;

    bool operator==(const DesiredRoute&) const = default;
};

/// What an adapter shall have of one family.
struct DesiredIp
{
    /// IPv6 only: whether the protocol is bound to the adapter.
    std::optional<bool> enabled;
    /// IPv4 only. False is implied by `addresses`.
    std::optional<bool> dhcp;
    /// Static addresses, in any order. Those that the system has made by itself, such as link-local ones of IPv6, are
    /// not meant unless they are named.
    std::optional<std::vector<IpPrefix>> addresses;
    /// Static default gateways, in any order; a metric that is absent is left alone.
    std::optional<std::vector<Gateway>> gateways;
    /// In their order of preference.
    std::optional<AutomaticOr<std::vector<IpAddress>>> dnsServers;
    std::optional<AutomaticOr<std::uint32_t>> metric; ///< of the interface
    std::optional<std::uint32_t> mtu;                 ///< bytes
    std::optional<std::string> dnsSuffix;             ///< IPv4 only: of the connection; empty for none
    std::optional<NetbiosSetting> netbios;            ///< IPv4 only

    bool operator==(const DesiredIp&) const = default;
};

/// What an adapter shall have.
struct DesiredAdapter
{
    /// Which one: its name, index, hardware address or GUID, alone or behind "name:", "index:", "mac:" or "guid:".
    std::string adapter;
    std::optional<bool> enabled;
    std::optional<std::string> connectionName;
    /// What the driver is told to use; automatic for its own.
    std::optional<AutomaticOr<HardwareAddress>> hardwareAddress;
    /// Of both families, as far as they are bound to the adapter and do not have one of their own here.
    std::optional<std::uint32_t> mtu;
    DesiredIp ipv4;
    DesiredIp ipv6;
    std::optional<std::vector<DesiredRoute>> routes;

    [[nodiscard]] const DesiredIp& Of(Family family) const noexcept { return family == Family::IPV4 ? ipv4 : ipv6; }
    [[nodiscard]] DesiredIp& Of(Family family) noexcept { return family == Family::IPV4 ? ipv4 : ipv6; }

    bool operator==(const DesiredAdapter&) const = default;
};

/// What the machine shall be called from its next start on.
struct DesiredIdentity
{
    std::optional<std::string> computerName;
    std::optional<std::string> primaryDnsSuffix; ///< empty for none
    std::optional<std::string> workgroup;        ///< takes effect at once

    bool operator==(const DesiredIdentity&) const = default;
};

struct DesiredState
{
    std::vector<DesiredAdapter> adapters;
    DesiredIdentity identity;

    bool operator==(const DesiredState&) const = default;
};

} // namespace zelk
