#include <state/desired/standing.h>

#include <algorithm>

namespace zelk
{
namespace
{

using Addresses = std::vector<IpAddress>;
using Prefixes = std::vector<IpPrefix>;

template <class T>
bool Includes(const std::vector<T>& all, const std::vector<T>& some)
{
    return std::ranges::all_of(some, [&](const T& element) { return Has(all, element); });
}

template <class T>
bool HaveSame(const std::vector<T>& left, const std::vector<T>& right)
{
    return Includes(left, right) && Includes(right, left);
}

const Gateway* Find(const std::vector<Gateway>& gateways, const IpAddress& address)
{
    const auto found = std::ranges::find(gateways, address, &Gateway::address);
    return found != gateways.end() ? &*found : nullptr;
}

/// All that are wanted, with their metrics as far as those are wanted.
bool IncludesGateways(const std::vector<Gateway>& gateways, const std::vector<Gateway>& wanted)
{
    return std::ranges::all_of(wanted, [&](const Gateway& gateway) {
        const Gateway* const found = Find(gateways, gateway.address);
        return found != nullptr && (!gateway.metric || found->metric == gateway.metric);
    });
}

bool HasNoOther(const std::vector<Gateway>& gateways, const std::vector<Gateway>& wanted)
{
    return std::ranges::all_of(gateways,
                               [&](const Gateway& gateway) { return Find(wanted, gateway.address) != nullptr; });
}

Addresses OfFamily(const std::optional<Addresses>& addresses, Family family)
{
    Addresses list = addresses.value_or(Addresses());
    std::erase_if(list, [family](const IpAddress& address) { return address.GetFamily() != family; });
    return list;
}

bool IsForeignServer(const Machine& machine, const Adapter& adapter, const IpAddress& server)
{
    return std::ranges::any_of(machine.adapters, [&](const Adapter& other) {
        const IpSettings& settings = other.Of(server.GetFamily());
        const auto& configured = settings.configured.dnsServers;
        const auto* const servers = configured ? std::get_if<Addresses>(&*configured) : nullptr;
        const auto leased = settings.lease ? settings.lease->dnsServers : std::nullopt;
        const bool given = leased ? Has(*leased, server) : settings.configured.dhcp == true; // by whom is not known
        return other.guid != adapter.guid && (servers != nullptr ? Has(*servers, server) : given);
    });
}

bool HasAddress(const Adapter& adapter, const IpAddress& address)
{
    return std::ranges::any_of(AddressesInUse(adapter, address.GetFamily()),
                               [&](const IpPrefix& own) { return own.address == address; });
}

bool IsStatic(const Adapter& adapter, const Route& route)
{
    const bool made =
        route.protocol ? route.protocol == RouteProtocol::MANAGEMENT : route.store == RouteStore::PERSISTENT;
    const bool byHand = route.origin.value_or(RouteOrigin::MANUAL) == RouteOrigin::MANUAL;
    const IpAddress& destination = route.destination.address;
    return made && byHand && route.destination.length > 0 && !destination.IsMulticast() && !destination.IsLoopback() &&
           !HasAddress(adapter, route.nextHop) && route.destination == route.destination.Network();
}

} // namespace

bool IsUp(const Adapter& adapter) noexcept
{
    return adapter.index && adapter.status == AdapterStatus::UP;
}

Prefixes AddressesInUse(const Adapter& adapter, Family family)
{
    Prefixes prefixes;
    for (const Address& address : adapter.Of(family).addresses.value_or(std::vector<Address>()))
        if (!(address.address.IsIpv4() && address.address.IsLinkLocal() && address.origin != AddressOrigin::MANUAL))
            prefixes.push_back({address.address, address.prefixLength.value_or(BitsOf(family))});
    return prefixes;
}

std::optional<Prefixes> ConfiguredAddresses(const Adapter& adapter, Family family)
{
    const IpSettings& settings = adapter.Of(family);
    if (family == Family::IPV4 || !settings.configured.addresses)
        return settings.configured.addresses;
    Prefixes prefixes = *settings.configured.addresses;
    for (const Address& address : settings.addresses.value_or(std::vector<Address>()))
        if (address.origin == AddressOrigin::DHCP && !settings.dhcp.value_or(false) && !address.address.IsLinkLocal() &&
            !address.address.IsLoopback())
            prefixes.push_back({address.address, address.prefixLength.value_or(BitsOf(family))});
    return prefixes;
}

std::vector<Gateway> StaticGatewaysInUse(const Adapter& adapter, Family family)
{
    const IpSettings& settings = adapter.Of(family);
    if (family == Family::IPV6)
        return settings.configured.gateways.value_or(std::vector<Gateway>());
    auto gateways = settings.gateways.value_or(std::vector<Gateway>());
    const bool client = settings.configured.dhcp.value_or(false);
    const auto configured = settings.configured.gateways.value_or(std::vector<Gateway>());
    std::erase_if(gateways,
                  [&](const Gateway& gateway) { return client && Find(configured, gateway.address) == nullptr; });
    return gateways;
}

std::vector<Route> StaticRoutes(const Adapter& adapter)
{
    std::vector<Route> routes = adapter.routes.value_or(std::vector<Route>());
    std::erase_if(routes, [&](const Route& route) { return !IsStatic(adapter, route); });
    return routes;
}

bool DhcpStands(const Adapter& adapter, bool wanted)
{
    const IpSettings& settings = adapter.ipv4;
    return settings.configured.dhcp ? settings.configured.dhcp == wanted : settings.dhcp == wanted;
}

bool AddressesStand(const Adapter& adapter, Family family, const Prefixes& wanted)
{
    const auto configured = ConfiguredAddresses(adapter, family);
    const Prefixes used = AddressesInUse(adapter, family);
    if (!adapter.Of(family).addresses) // nobody knows
        return false;
    if (!configured) // such as where the protocol is not bound
        return family == Family::IPV6 && wanted.empty() && used.empty();
    if (family == Family::IPV6) // those of the system's own stand beside them, and may be named
        return Includes(wanted, *configured) && Includes(used, wanted);
    if (adapter.ipv4.configured.dhcp == true || !HaveSame(*configured, wanted))
        return false;
    return Includes(wanted, used) && (!IsUp(adapter) || Includes(used, wanted));
}

bool IsConfiguredExactly(const Adapter& adapter, const DesiredIp& wanted)
{
    const ConfiguredIp& configured = adapter.ipv4.configured;
    return (!wanted.gateways || configured.gateways == wanted.gateways) &&
           (!wanted.addresses || configured.dhcp == true || configured.addresses == wanted.addresses);
}

bool GatewaysStand(const Adapter& adapter, Family family, const std::vector<Gateway>& wanted)
{
    const IpSettings& settings = adapter.Of(family);
    if (!settings.gateways)
        return false;
    if (!settings.configured.gateways)
        return family == Family::IPV6 && wanted.empty() && settings.gateways->empty();
    const auto& configured = *settings.configured.gateways;
    if (!HasNoOther(configured, wanted) || (family == Family::IPV4 && !IncludesGateways(configured, wanted)))
        return false;
    if (family == Family::IPV6)
        return IncludesGateways(*settings.gateways, wanted);
    return HasNoOther(StaticGatewaysInUse(adapter, family), wanted) &&
           (!IsUp(adapter) || IncludesGateways(*settings.gateways, wanted));
}

bool DnsServersStand(const Machine& machine, const Adapter& adapter, Family family,
                     const AutomaticOr<Addresses>& wanted)
{
    const IpSettings& settings = adapter.Of(family);
    if (settings.configured.dnsServers != wanted)
        return false;
    const auto* const servers = std::get_if<Addresses>(&wanted);
    if (servers != nullptr && !settings.dnsServers)
        return false;
    if (servers == nullptr || !IsUp(adapter) || settings.enabled == false)
        return true;
    auto next = servers->begin();
    for (const IpAddress& server : OfFamily(settings.dnsServers, family))
    {
        const bool repeated = std::find(servers->begin(), next, server) != next; // it is asked no second time
        if (next != servers->end() && server == *next)
            ++next;
        else if (!repeated && !IsForeignServer(machine, adapter, server))
            return false;
    }
    return next == servers->end();
}

bool MetricStands(const IpSettings& settings, const AutomaticOr<std::uint32_t>& wanted)
{
    const auto* const metric = std::get_if<std::uint32_t>(&wanted);
    if (!settings.automaticMetric)
        return settings.configured.metric == wanted;
    if (metric == nullptr)
        return *settings.automaticMetric;
    return !*settings.automaticMetric && settings.metric == *metric &&
           settings.configured.metric.value_or(wanted) == wanted;
}

bool DnsSuffixStands(const IpSettings& settings, const std::string& wanted)
{
    return settings.configured.dnsSuffix == wanted;
}

bool NetbiosStands(const IpSettings& settings, NetbiosSetting wanted) noexcept
{
    return settings.configured.netbios == wanted;
}

bool MtuStands(const IpSettings& settings, std::uint32_t wanted)
{
    const auto& configured = settings.configured.mtu;
    const auto* const stored = configured ? std::get_if<std::uint32_t>(&*configured) : nullptr;
    return settings.mtu == wanted && (stored == nullptr || *stored == wanted);
}

bool IsSameWay(const Route& route, const DesiredRoute& wanted) noexcept
{
    return route.destination == wanted.destination && route.nextHop == wanted.nextHop;
}

bool RouteStands(const Adapter& adapter, const Route& route, const DesiredRoute& wanted)
{
    if (!IsSameWay(route, wanted) || (wanted.metric && route.metric != wanted.metric))
        return false;
    if (IsUp(adapter) && route.store == RouteStore::PERSISTENT)
        return false;
    if (!wanted.store || !route.nextHop.IsIpv4()) // of IPv6 no system tells
        return true;
    return (wanted.store == RouteStore::ACTIVE) == (route.store == RouteStore::ACTIVE);
}

bool RoutesStand(const Adapter& adapter, const std::vector<DesiredRoute>& wanted)
{
    if (!adapter.routes)
        return false;
    const std::vector<Route> routes = StaticRoutes(adapter);
    const auto isWanted = [&](const Route& route) {
        return std::ranges::any_of(wanted, [&](const DesiredRoute& one) { return RouteStands(adapter, route, one); });
    };
    const auto isThere = [&](const DesiredRoute& one) {
        return std::ranges::any_of(routes, [&](const Route& route) { return RouteStands(adapter, route, one); });
    };
    return std::ranges::all_of(routes, isWanted) && std::ranges::all_of(wanted, isThere);
}

bool HardwareAddressStands(const Adapter& adapter, const AutomaticOr<HardwareAddress>& wanted)
{
    const auto* const address = std::get_if<HardwareAddress>(&wanted);
    if (address == nullptr)
        return !adapter.driver.hardwareAddress;
    return adapter.driver.hardwareAddress == *address && (!IsUp(adapter) || adapter.hardwareAddress == *address);
}

} // namespace zelk
