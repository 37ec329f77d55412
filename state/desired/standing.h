#pragma once

#include <string>
#include <vector>

#include <state/desired/desired_state.h>
#include <state/machine/machine.h>

// Whether a part of an adapter is as it is wanted: both in use and configured. What is in use counts only while the
// adapter is up: without a link the system withholds routes and servers that it will use again.

namespace zelk
{

/// Whether the adapter passes packets, so that what it uses is all that it is to use.
bool IsUp(const Adapter& adapter) noexcept;

/// Addresses in use with their prefix lengths, without those of IPv4 that the adapter has given itself.
std::vector<IpPrefix> AddressesInUse(const Adapter& adapter, Family family);
/// Configured addresses. Of IPv6, beside those that are known to be manual, those that claim to come from a DHCP server
/// although DHCP is off. Nothing where it is not known.
std::optional<std::vector<IpPrefix>> ConfiguredAddresses(const Adapter& adapter, Family family);
/// Addresses of the gateways in use; of IPv4 only those that no DHCP server gave.
std::vector<Gateway> StaticGatewaysInUse(const Adapter& adapter, Family family);
/// Routes that a person or a program has made, without default routes.
std::vector<Route> StaticRoutes(const Adapter& adapter);

bool DhcpStands(const Adapter& adapter, bool wanted);
bool AddressesStand(const Adapter& adapter, Family family, const std::vector<IpPrefix>& wanted);
/// Whether the IPv4 addresses and gateways that are wanted are configured to the letter: in this order, and a metric
/// that is absent is the system's choice.
bool IsConfiguredExactly(const Adapter& adapter, const DesiredIp& wanted);
bool GatewaysStand(const Adapter& adapter, Family family, const std::vector<Gateway>& wanted);
/// A server that only another adapter is configured to use may stand among those in use: some systems keep one list.
bool DnsServersStand(const Machine& machine, const Adapter& adapter, Family family,
                     const AutomaticOr<std::vector<IpAddress>>& wanted);
bool MetricStands(const IpSettings& settings, const AutomaticOr<std::uint32_t>& wanted);
bool DnsSuffixStands(const IpSettings& settings, const std::string& wanted);
bool NetbiosStands(const IpSettings& settings, NetbiosSetting wanted) noexcept;
bool MtuStands(const IpSettings& settings, std::uint32_t wanted);
bool RoutesStand(const Adapter& adapter, const std::vector<DesiredRoute>& wanted);
/// Whether one route is as wanted.
bool RouteStands(const Adapter& adapter, const Route& route, const DesiredRoute& wanted);
bool IsSameWay(const Route& route, const DesiredRoute& wanted) noexcept; ///< destination and next hop
bool HardwareAddressStands(const Adapter& adapter, const AutomaticOr<HardwareAddress>& wanted);

/// Whether the list has the element.
template <class T>
bool Has(const std::vector<T>& list, const T& element)
{
    for (const T& one : list)
        if (one == element)
            return true;
    return false;
}

} // namespace zelk
