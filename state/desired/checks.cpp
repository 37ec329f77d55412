#include <state/desired/checks.h>

#include <algorithm>
#include <map>
#include <utility>

#include <state/desired/adapter_name.h>
#include <state/desired/host_address.h>
#include <state/desired/machine_names.h>
#include <state/desired/object_reader.h>
#include <state/desired/standing.h>

namespace zelk
{
namespace
{

using Prefixes = std::vector<IpPrefix>;

constexpr std::uint32_t GREATEST_METRIC = 9999;
constexpr std::uint32_t GREATEST_MTU = 65535;

std::string Quoted(const std::string& text)
{
    return '"' + text + '"';
}

/// Checks one adapter of a desired state.
class AdapterCheck
{
public:
    AdapterCheck(const Adapter& adapter, const DesiredAdapter& desired, std::string place, std::vector<Fault>& faults)
        : m_adapter(adapter), m_desired(desired), m_place(std::move(place)), m_faults(faults)
    {
    }

    void Run()
    {
        for (const Family family : FAMILIES)
            CheckIp(family);
        if (m_desired.ipv4.dhcp == true && m_desired.ipv4.addresses && !m_desired.ipv4.addresses->empty())
            Refuse("/ipv4/addresses", "cannot be given where \"dhcp\" is true");
        if (m_desired.ipv4.dhcp == false && !m_desired.ipv4.addresses && m_adapter.ipv4.configured.dhcp == true)
            Refuse("/ipv4", "needs \"addresses\" where \"dhcp\" becomes false");
        if (m_desired.mtu)
            CheckMtu("/mtu", Family::IPV6, *m_desired.mtu);
        CheckRoutes();
        CheckHardwareAddress();
        if (m_desired.connectionName)
            Refuse("/connectionName", RefuseAsConnectionName(*m_desired.connectionName));
    }

private:
    void Refuse(const std::string& place, const std::string& text)
    {
        if (!text.empty())
            m_faults.push_back({FaultKind::MEANING, m_place + place, text});
    }

    void CheckIp(Family family)
    {
        const DesiredIp& ip = m_desired.Of(family);
        const std::string place = family == Family::IPV4 ? "/ipv4" : "/ipv6";
        if (ip.addresses)
            CheckAddresses(place + "/addresses", *ip.addresses);
        if (ip.gateways)
            CheckGateways(place + "/gateways", family, *ip.gateways);
        if (ip.dnsServers)
            CheckServers(place + "/dnsServers", family, *ip.dnsServers);
        const auto* const metric = ip.metric ? std::get_if<std::uint32_t>(&*ip.metric) : nullptr;
        if (metric != nullptr)
            CheckMetric(place + "/metric", *metric);
        if (ip.mtu)
            CheckMtu(place + "/mtu", family, *ip.mtu);
        if (ip.dnsSuffix)
            Refuse(place + "/dnsSuffix", RefuseAsDnsSuffix(*ip.dnsSuffix));
        const bool hasList = (ip.addresses && !ip.addresses->empty()) || (ip.gateways && !ip.gateways->empty());
        if (ip.enabled == false && hasList)
            Refuse(place, "cannot have addresses or gateways where \"enabled\" is false");
    }

    void CheckAddresses(const std::string& place, const Prefixes& addresses)
    {
        for (std::size_t i = 0; i < addresses.size(); ++i)
        {
            // What the adapter has given itself may be named.
            if (const std::string reason = RefuseAsHost(addresses[i]); !reason.empty())
                Refuse(PlaceOf(place, i), addresses[i].ToText() + ' ' + reason);
            const auto first =
                std::ranges::find(addresses, addresses[i].address, &IpPrefix::address) - addresses.begin();
            if (std::cmp_less(first, i))
                Refuse(PlaceOf(place, i), addresses[i].address.ToText() + " stands in the list twice");
        }
    }

    /// The networks that the adapter will be on. Nothing where DHCP will decide.
    [[nodiscard]] std::optional<Prefixes> Networks(Family family) const
    {
        const DesiredIp& ip = m_desired.Of(family);
        Prefixes networks;
        if (ip.addresses)
            networks = *ip.addresses;
        else if (ip.dhcp == true && !DhcpStands(m_adapter, true))
            return std::nullopt;
        if (!ip.addresses || family == Family::IPV6)
            for (const IpPrefix& address : AddressesInUse(m_adapter, family))
                networks.push_back(address);
        if (!ip.addresses)
            for (const IpPrefix& address : ConfiguredAddresses(m_adapter, family).value_or(Prefixes()))
                networks.push_back(address);
        return networks;
    }

    /// Whether a neighbour has that address. Every IPv6 link has fe80::/10.
    void CheckOnLink(const std::string& place, const IpAddress& address)
    {
        const auto networks = Networks(address.GetFamily());
        if (!networks || (!address.IsIpv4() && address.IsLinkLocal()))
            return;
        if (std::ranges::any_of(*networks, [&](const IpPrefix& own) { return own.address == address; }))
            return Refuse(place, address.ToText() + " is an address of the adapter itself");
        const auto network =
            std::ranges::find_if(*networks, [&](const IpPrefix& own) { return own.Contains(address); });
        if (network == networks->end())
            return Refuse(place, address.ToText() + " is on none of the adapter's networks");
        Refuse(place, RefuseAsHost({address, network->length}).empty()
                          ? ""
                          : address.ToText() + ' ' + RefuseAsHost({address, network->length}));
    }

    void CheckGateways(const std::string& place, Family family, const std::vector<Gateway>& gateways)
    {
        for (std::size_t i = 0; i < gateways.size(); ++i)
        {
            const IpAddress& address = gateways[i].address;
            if (const std::string reason = RefuseAsPeer(address); !reason.empty())
                Refuse(PlaceOf(place, i), address.ToText() + ' ' + reason);
            else
                CheckOnLink(PlaceOf(place, i), address);
            if (std::cmp_less(std::ranges::find(gateways, address, &Gateway::address) - gateways.begin(), i))
                Refuse(PlaceOf(place, i), address.ToText() + " stands in the list twice");
            if (const auto& metric = gateways[i].metric)
                CheckMetric(PlaceOf(place, i) + "/metric", *metric);
        }
        (void)family;
    }

    void CheckServers(const std::string& place, Family family, const AutomaticOr<std::vector<IpAddress>>& wanted)
    {
        const auto* const servers = std::get_if<std::vector<IpAddress>>(&wanted);
        if (servers == nullptr)
            return;
        const bool client =
            m_desired.ipv4.addresses ? false : m_desired.ipv4.dhcp.value_or(DhcpStands(m_adapter, true));
        if (servers->empty() && (family == Family::IPV6 || client))
            Refuse(place, "needs at least one server; \"automatic\" leaves them to the network");
        for (std::size_t i = 0; i < servers->size(); ++i)
        {
            const IpAddress& server = (*servers)[i];
            const std::string reason = server.IsLoopback() ? "" : RefuseAsPeer(server); // a resolver of this machine
            Refuse(PlaceOf(place, i), reason.empty() ? "" : server.ToText() + ' ' + reason);
            if (std::cmp_less(std::ranges::find(*servers, server) - servers->begin(), i))
                Refuse(PlaceOf(place, i), server.ToText() + " stands in the list twice");
        }
    }

    void CheckMetric(const std::string& place, std::uint32_t metric)
    {
        if (metric < 1 || metric > GREATEST_METRIC)
            Refuse(place, "must be from 1 to 9999");
    }

    void CheckMtu(const std::string& place, Family family, std::uint32_t mtu)
    {
        const std::uint32_t least = family == Family::IPV4 ? 576 : 1280;
        if (mtu < least || mtu > GREATEST_MTU)
            Refuse(place, "must be from " + std::to_string(least) + " to 65535 bytes");
    }

    void CheckRoutes()
    {
        if (!m_desired.routes)
            return;
        const auto& routes = *m_desired.routes;
        for (std::size_t i = 0; i < routes.size(); ++i)
        {
            const std::string place = PlaceOf("/routes", i);
            const DesiredRoute& route = routes[i];
            if (const std::string reason = RefuseAsDestination(route.destination); !reason.empty())
                Refuse(place + "/destination", route.destination.ToText() + ' ' + reason);
            if (!route.nextHop.IsUnspecified())
                CheckNextHop(place + "/nextHop", route.nextHop);
            if (route.metric)
                CheckMetric(place + "/metric", *route.metric);
            const auto same = std::ranges::find_if(routes, [&](const DesiredRoute& other) {
                return other.destination == route.destination && other.nextHop == route.nextHop;
            });
            if (std::cmp_less(same - routes.begin(), i))
                Refuse(place, route.destination.ToText() + " stands in the list twice with this next hop");
        }
    }

    void CheckNextHop(const std::string& place, const IpAddress& nextHop)
    {
        if (const std::string reason = RefuseAsPeer(nextHop); !reason.empty())
            Refuse(place, nextHop.ToText() + ' ' + reason);
        else
            CheckOnLink(place, nextHop);
    }

    void CheckHardwareAddress()
    {
        const auto* const address =
            m_desired.hardwareAddress ? std::get_if<HardwareAddress>(&*m_desired.hardwareAddress) : nullptr;
        if (address == nullptr)
            return;
        const auto bytes = address->Bytes();
        if (std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; }))
            Refuse("/hardwareAddress", "is all zero; an adapter needs an address of its own");
        else if ((bytes[0] & 1) != 0)
            Refuse("/hardwareAddress", "is the address of a group; the first byte of an adapter's is even");
    }

    const Adapter& m_adapter;
    const DesiredAdapter& m_desired;
    std::string m_place;
    std::vector<Fault>& m_faults;
};

/// No two adapters may bear the same address; link-local ones belong to their links.
class AddressOwners
{
public:
    explicit AddressOwners(std::vector<Fault>& faults) : m_faults(faults) {}

    void AddUntouched(const Adapter& adapter, Family family)
    {
        if (IsUp(adapter))
            for (const IpPrefix& address : AddressesInUse(adapter, family))
                m_owners.emplace(address.address, NameOf(adapter));
    }

    void Add(const std::string& owner, const std::string& place, const Prefixes& addresses)
    {
        for (std::size_t i = 0; i < addresses.size(); ++i)
        {
            const IpAddress& address = addresses[i].address;
            if (address.IsLinkLocal())
                continue;
            const auto [other, isNew] = m_owners.emplace(address, owner);
            if (!isNew && other->second != owner)
                m_faults.push_back({FaultKind::MEANING, PlaceOf(place, i),
                                    address.ToText() + " is an address of adapter " + Quoted(other->second) + " too"});
        }
    }

private:
    std::map<IpAddress, std::string> m_owners;
    std::vector<Fault>& m_faults;
};

const DesiredAdapter* FindDesired(const std::vector<const Adapter*>& adapters, const DesiredState& state,
                                  const Adapter& adapter)
{
    const auto found = std::ranges::find(adapters, &adapter);
    return found != adapters.end() ? &state.adapters[static_cast<std::size_t>(found - adapters.begin())] : nullptr;
}

void CheckOwners(const Machine& machine, const std::vector<const Adapter*>& adapters, const DesiredState& state,
                 std::vector<Fault>& faults)
{
    AddressOwners owners(faults);
    for (const Adapter& adapter : machine.adapters)
        for (const Family family : FAMILIES)
        {
            const DesiredAdapter* const desired = FindDesired(adapters, state, adapter);
            if (desired == nullptr || (!desired->Of(family).addresses && desired->Of(family).dhcp != true))
                owners.AddUntouched(adapter, family);
        }
    for (std::size_t i = 0; i < state.adapters.size(); ++i)
        for (const Family family : FAMILIES)
            if (adapters[i] != nullptr && state.adapters[i].Of(family).addresses)
                owners.Add(NameOf(*adapters[i]),
                           PlaceOf("/adapters", i) + (family == Family::IPV4 ? "/ipv4/addresses" : "/ipv6/addresses"),
                           *state.adapters[i].Of(family).addresses);
}

void CheckIdentity(const DesiredIdentity& identity, std::vector<Fault>& faults)
{
    const auto check = [&](const char* place, const std::optional<std::string>& name, auto refuse) {
        if (const std::string reason = name ? refuse(*name) : std::string(); !reason.empty())
            faults.push_back({FaultKind::MEANING, place, reason});
    };
    check("/identity/computerName", identity.computerName, RefuseAsComputerName);
    check("/identity/primaryDnsSuffix", identity.primaryDnsSuffix, RefuseAsDnsSuffix);
    check("/identity/workgroup", identity.workgroup, RefuseAsWorkgroup);
}

void CheckConnectionNames(const Machine& machine, const std::vector<const Adapter*>& adapters,
                          const DesiredState& state, std::vector<Fault>& faults)
{
    for (std::size_t i = 0; i < state.adapters.size(); ++i)
    {
        const auto& name = state.adapters[i].connectionName;
        if (!name || adapters[i] == nullptr)
            continue;
        for (const Adapter* other : FindAdapters(machine, "name:" + *name))
            if (other != adapters[i])
                faults.push_back({FaultKind::MEANING, PlaceOf("/adapters", i) + "/connectionName",
                                  Quoted(*name) + " is the name of another adapter"});
    }
}

} // namespace

std::vector<const Adapter*> ResolveAdapters(const Machine& machine, const DesiredState& state,
                                            std::vector<Fault>& faults)
{
    std::vector<const Adapter*> adapters;
    for (std::size_t i = 0; i < state.adapters.size(); ++i)
    {
        const std::string& name = state.adapters[i].adapter;
        const std::string place = PlaceOf("/adapters", i) + "/adapter";
        const auto found = FindAdapters(machine, name);
        const Adapter* const adapter = found.size() == 1 ? found.front() : nullptr;
        if (found.empty())
            faults.push_back({FaultKind::ADAPTER, place, "there is no adapter " + Quoted(name)});
        else if (adapter == nullptr)
            faults.push_back({FaultKind::ADAPTER, place, Quoted(name) + " names several adapters; use \"guid:{...}\""});
        else if (Has(adapters, adapter))
            faults.push_back(
                {FaultKind::MEANING, place, Quoted(name) + " names an adapter that stands in the list already"});
        adapters.push_back(adapter);
    }
    return adapters;
}

void CheckDesiredState(const Machine& machine, const std::vector<const Adapter*>& adapters, const DesiredState& state,
                       std::vector<Fault>& faults)
{
    for (std::size_t i = 0; i < state.adapters.size(); ++i)
        if (adapters[i] != nullptr)
            AdapterCheck(*adapters[i], state.adapters[i], PlaceOf("/adapters", i), faults).Run();
    CheckOwners(machine, adapters, state, faults);
    CheckConnectionNames(machine, adapters, state, faults);
    CheckIdentity(state.identity, faults);
}

} // namespace zelk
