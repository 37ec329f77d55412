#include <state/plan/target.h>

#include <algorithm>

#include <state/desired/standing.h>

namespace zelk
{
namespace
{

bool IsOnLink(const std::vector<IpPrefix>& networks, const IpAddress& address)
{
    return std::ranges::any_of(networks, [&](const IpPrefix& network) { return network.Contains(address); });
}

void SpreadMtu(const Adapter& adapter, DesiredAdapter& desired)
{
    for (const Family family : FAMILIES)
        if (desired.mtu && !desired.Of(family).mtu && adapter.Of(family).enabled != false)
            desired.Of(family).mtu = desired.mtu;
}

/// Without servers of its own and without DHCP there are none: the system stores both the same.
void JoinNoServers(DesiredIp& ip)
{
    const auto* const servers = ip.dnsServers ? std::get_if<std::vector<IpAddress>>(&*ip.dnsServers) : nullptr;
    if (servers != nullptr && servers->empty())
        ip.dnsServers = Automatic();
}

void KeepGateways(const Adapter& adapter, DesiredIp& ip)
{
    auto& kept = ip.gateways.emplace();
    const auto keep = [&](const Gateway& gateway) {
        const auto known = std::ranges::find(kept, gateway.address, &Gateway::address);
        if (known == kept.end() && IsOnLink(*ip.addresses, gateway.address))
            kept.push_back(gateway);
    };
    std::ranges::for_each(adapter.ipv4.configured.gateways.value_or(std::vector<Gateway>()), keep);
    for (Gateway gateway : adapter.ipv4.gateways.value_or(std::vector<Gateway>()))
    {
        gateway.metric.reset();
        keep(gateway);
    }
}

void KeepRoutes(const Adapter& adapter, DesiredAdapter& desired)
{
    const auto routes = StaticRoutes(adapter);
    if (routes.empty())
        return;
    auto& kept = desired.routes.emplace();
    for (const Route& route : routes)
        if (!route.nextHop.IsIpv4() || route.nextHop.IsUnspecified() ||
            IsOnLink(*desired.ipv4.addresses, route.nextHop))
            kept.push_back({route.destination, route.nextHop, route.metric,
                            route.store == RouteStore::ACTIVE ? RouteStore::ACTIVE : RouteStore::PERSISTENT});
}

} // namespace

DesiredAdapter Complete(const Adapter& adapter, const DesiredAdapter& desired)
{
    DesiredAdapter complete = desired;
    SpreadMtu(adapter, complete);
    JoinNoServers(complete.ipv4);
    if (!complete.ipv4.addresses)
        return complete;
    complete.ipv4.dhcp = false;
    if (AddressesStand(adapter, Family::IPV4, *complete.ipv4.addresses))
        return complete;
    if (!complete.ipv4.gateways)
        KeepGateways(adapter, complete.ipv4);
    if (!complete.routes)
        KeepRoutes(adapter, complete);
    return complete;
}

} // namespace zelk
