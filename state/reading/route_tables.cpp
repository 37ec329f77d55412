#include <state/reading/route_tables.h>

#include <algorithm>
#include <cstring>
#include <map>

#include <state/machine/persistent_route.h>
#include <state/platform/mib_table.h>
#include <state/platform/registry_keys.h>
#include <state/platform/socket_address.h>
#include <state/platform/table_buffer.h>
#include <state/platform/utf8.h>
#include <state/reading/stored_key.h>

namespace zelk
{
namespace
{

RouteProtocol ProtocolOf(int protocol)
{
    switch (protocol)
    {
    case RouteProtocolLocal: return RouteProtocol::LOCAL;
    case RouteProtocolNetMgmt: return RouteProtocol::MANAGEMENT;
    case RouteProtocolIcmp: return RouteProtocol::ICMP;
    default: return RouteProtocol::OTHER;
    }
}

std::optional<RouteOrigin> OriginOf(NL_ROUTE_ORIGIN origin)
{
    switch (origin)
    {
    case NlroManual: return RouteOrigin::MANUAL;
    case NlroWellKnown: return RouteOrigin::WELL_KNOWN;
    case NlroDHCP: return RouteOrigin::DHCP;
    case NlroRouterAdvertisement: return RouteOrigin::ROUTER;
    case Nlro6to4: return RouteOrigin::SIX_TO_FOUR;
    default: return std::nullopt;
    }
}

/// Nothing for a row that makes no sense.
std::optional<Route> RouteOf(const MIB_IPFORWARD_ROW2& row, Family family)
{
    const auto destination = FromSocketAddress(row.DestinationPrefix.Prefix);
    const std::uint8_t length = row.DestinationPrefix.PrefixLength;
    if (!destination || destination->GetFamily() != family || length > BitsOf(family))
        return std::nullopt;
    Route route;
    route.destination = {*destination, length};
    route.nextHop = FromSocketAddress(row.NextHop).value_or(IpAddress::Unspecified(family));
    route.metric = row.Metric;
    route.origin = OriginOf(row.Origin);
    route.protocol = ProtocolOf(row.Protocol);
    return route;
}

std::optional<Route> RouteOf(const MIB_IPFORWARDROW& row)
{
    const auto length = PrefixLengthOfMask(FromNetworkOrder(row.dwForwardMask));
    if (!length)
        return std::nullopt;
    Route route;
    route.destination = {FromNetworkOrder(row.dwForwardDest), *length};
    route.nextHop = FromNetworkOrder(row.dwForwardNextHop);
    route.metric = row.dwForwardMetric1;
    route.protocol = ProtocolOf(static_cast<int>(row.dwForwardProto));
    return route;
}

/// Gives an adapter its route; routes of what is no adapter are left out.
void AddRoute(Reading& reading, Family family, std::uint32_t index, const std::optional<Route>& route)
{
    if (Adapter* const adapter = reading.Find(family, index); adapter != nullptr && route)
        adapter->routes->push_back(*route);
}

enum class TableState
{
    READ,
    MISSING, ///< the system has no such table
    UNREADABLE
};

TableState ReadNewTable(Reading& reading, Family family, decltype(::GetIpForwardTable2)& getTable)
{
    MibTable<MIB_IPFORWARD_TABLE2> table;
    const DWORD code = table.Read([&](auto** rows) { return getTable(PlatformFamily(family), rows); });
    for (const MIB_IPFORWARD_ROW2& row : table.Rows())
        AddRoute(reading, family, row.InterfaceIndex, RouteOf(row, family));
    // No route, or no such family here.
    if (code == NO_ERROR || code == ERROR_NOT_FOUND || code == ERROR_NOT_SUPPORTED)
        return TableState::READ;
    reading.Report(code, "GetIpForwardTable2", std::string("The ") + FamilyName(family) + " routes are not known.");
    return TableState::UNREADABLE;
}

TableState ReadOldTable(Reading& reading)
{
    TableBuffer buffer(64 * sizeof(MIB_IPFORWARDROW));
    const DWORD code = buffer.Fill(ERROR_INSUFFICIENT_BUFFER, [](void* table, ULONG& size) {
        return ::GetIpForwardTable(static_cast<MIB_IPFORWARDTABLE*>(table), &size, FALSE);
    });
    if (code == ERROR_NO_DATA)
        return TableState::READ; // no route
    if (code != NO_ERROR)
    {
        reading.Report(code, "GetIpForwardTable", "The IPv4 routes are not known.");
        return TableState::UNREADABLE;
    }
    const auto* const table = buffer.As<MIB_IPFORWARDTABLE>();
    for (const MIB_IPFORWARDROW& row : buffer.Rows(table->table, table->dwNumEntries))
        AddRoute(reading, Family::IPV4, row.dwForwardIfIndex, RouteOf(row));
    return TableState::READ;
}

bool HasAddress(const Adapter& adapter, const IpAddress& address)
{
    const auto& addresses = *adapter.Of(address.GetFamily()).addresses;
    return std::ranges::find(addresses, address, &Address::address) != addresses.end();
}

/// Before Vista the next hop of a route without a gateway is an address of the adapter itself.
bool HasGateway(const Adapter& adapter, const Route& route)
{
    return route.destination.length == 0 && !route.nextHop.IsUnspecified() && !HasAddress(adapter, route.nextHop);
}

void ConcludeGateways(Adapter& adapter, Family family)
{
    auto& gateways = adapter.Of(family).gateways.emplace();
    for (const Route& route : *adapter.routes)
        if (route.nextHop.GetFamily() == family && HasGateway(adapter, route))
            gateways.push_back({route.nextHop, route.metric});
    std::ranges::stable_sort(gateways, {}, &Gateway::metric);
}

TableState ReadTable(Reading& reading, Family family)
{
    auto* const getTable = reading.IsVistaOrLater()
                               ? FindFunction<decltype(::GetIpForwardTable2)>(L"iphlpapi.dll", "GetIpForwardTable2")
                               : nullptr;
    if (getTable != nullptr)
        return ReadNewTable(reading, family, *getTable);
    return family == Family::IPV4 ? ReadOldTable(reading) : TableState::MISSING; // there is no older one of IPv6
}

/// All networks that adapters are on or will be on, to find the adapter of a gateway in one look.
class Networks
{
public:
    explicit Networks(Machine& machine)
    {
        for (Adapter& adapter : machine.adapters)
        {
            for (const Address& address : adapter.ipv4.addresses.value_or(std::vector<Address>()))
                if (address.prefixLength)
                    Add({address.address, *address.prefixLength}, adapter);
            for (const IpPrefix& address : adapter.ipv4.configured.addresses.value_or(std::vector<IpPrefix>()))
                Add(address, adapter);
        }
    }

    /// The adapter on the smallest network that the address is of; null without one.
    [[nodiscard]] Adapter* Find(const IpAddress& address) const
    {
        for (int length = BitsOf(Family::IPV4); length >= 0; --length)
        {
            const auto found = m_adapters.find(IpPrefix{address, static_cast<std::uint8_t>(length)}.Network());
            if (found != m_adapters.end())
                return found->second;
        }
        return nullptr;
    }

private:
    void Add(const IpPrefix& prefix, Adapter& adapter) { m_adapters.emplace(prefix.Network(), &adapter); }

    std::map<IpPrefix, Adapter*> m_adapters;
};

/// The same destination and next hop, whatever the metric.
using RouteKey = std::pair<IpPrefix, IpAddress>;

std::multimap<RouteKey, Route*> ActiveRoutes(Machine& machine)
{
    std::multimap<RouteKey, Route*> routes;
    for (Adapter& adapter : machine.adapters)
        if (adapter.routes)
            for (Route& route : *adapter.routes)
                routes.emplace(RouteKey(route.destination, route.nextHop), &route);
    return routes;
}

/// Nothing when they cannot be read.
std::optional<std::vector<Route>> StoredRoutes(Reading& reading)
{
    StoredKey key(PERSISTENT_ROUTES, reading.machine.problems);
    if (!key.IsThere() && !key.IsMissing())
        return std::nullopt;
    std::vector<Route> routes;
    for (const RegistryValue& value : key.Values())
    {
        if (value.name.empty())
            continue; // a key's default value
        if (const auto route = ParsePersistentRoute(ToUtf8(value.name)))
            routes.push_back(*route);
        else
            key.Refuse<Route>(value.name, "is not a route");
    }
    return routes;
}

/// A default gateway of the adapter's own settings makes its route persistent.
void MarkConfiguredGateways(Adapter& adapter)
{
    if (!adapter.routes || !adapter.ipv4.configured.gateways)
        return;
    for (const Gateway& gateway : *adapter.ipv4.configured.gateways)
        for (Route& route : *adapter.routes)
            if (route.destination.length == 0 && route.nextHop == gateway.address)
                route.store = RouteStore::BOTH;
}

/// A list that lacks some of them would pass for all.
void ForgetRoutes(Machine& machine)
{
    for (Adapter& adapter : machine.adapters)
        adapter.routes.reset();
}

} // namespace

void ReadRouteTables(Reading& reading)
{
    for (Adapter& adapter : reading.machine.adapters)
        adapter.routes.emplace();
    bool known = true;
    for (const Family family : FAMILIES)
    {
        const TableState state = ReadTable(reading, family);
        known = known && state != TableState::UNREADABLE;
        if (state == TableState::READ)
            for (Adapter& adapter : reading.machine.adapters)
                ConcludeGateways(adapter, family);
    }
    if (!known)
        ForgetRoutes(reading.machine);
}

void ReadPersistentRoutes(Reading& reading)
{
    std::ranges::for_each(reading.machine.adapters, MarkConfiguredGateways);
    const auto stored = StoredRoutes(reading);
    if (!stored)
        ForgetRoutes(reading.machine);
    if (!stored || stored->empty())
        return;
    const auto active = ActiveRoutes(reading.machine);
    const Networks networks(reading.machine);
    std::vector<std::pair<Adapter*, Route>> added; // afterwards: adding moves the routes that `active` points to
    for (const Route& route : *stored)
    {
        const auto [first, last] = active.equal_range(RouteKey(route.destination, route.nextHop));
        for (auto same = first; same != last; ++same)
            same->second->store = RouteStore::BOTH;
        if (first == last)
            added.emplace_back(networks.Find(route.nextHop), route);
    }
    for (auto& [adapter, route] : added)
    {
        if (adapter == nullptr)
            reading.machine.unassignedRoutes.push_back(route);
        else if (adapter->routes)
            adapter->routes->push_back(route);
    }
}

} // namespace zelk
