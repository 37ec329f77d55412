#include <algorithm>

#include <state/desired/standing.h>
#include <state/fields/json_value.h>
#include <state/plan/plan.h>

namespace zelk
{
namespace
{

Json InUse(Json inUse, Json configured)
{
    return {{"inUse", std::move(inUse)}, {"configured", std::move(configured)}};
}

template <class T>
Json JsonOf(const T& value)
{
    return JsonValue<T>::Write(value);
}

Json AddressesOf(const IpSettings& settings)
{
    if (!settings.addresses)
        return nullptr;
    Json list = Json::array();
    for (const Address& address : *settings.addresses)
        list.push_back({{"address", address.prefixLength ? IpPrefix{address.address, *address.prefixLength}.ToText()
                                                         : address.address.ToText()},
                        {"origin", JsonOf(address.origin)}});
    return list;
}

/// With who gave them: the routes of a DHCP server are not the adapter's own.
Json GatewaysOf(const Adapter& adapter, Family family)
{
    const auto& gateways = adapter.Of(family).gateways;
    if (!gateways)
        return nullptr;
    const auto own = StaticGatewaysInUse(adapter, family);
    Json list = Json::array();
    for (const Gateway& gateway : *gateways)
    {
        const bool manual = std::ranges::find(own, gateway.address, &Gateway::address) != own.end();
        list.push_back({{"address", gateway.address.ToText()},
                        {"metric", JsonOf(gateway.metric)},
                        {"origin", manual                   ? "manual"
                                   : family == Family::IPV4 ? "dhcp"
                                                            : "router"}});
    }
    return list;
}

Json RoutesOf(const std::vector<Route>& routes)
{
    Json list = Json::array();
    for (const Route& route : routes)
        list.push_back({{"destination", route.destination.ToText()},
                        {"nextHop", route.nextHop.ToText()},
                        {"metric", JsonOf(route.metric)},
                        {"store", JsonOf(route.store)}});
    return list;
}

Json RoutesOf(const std::vector<DesiredRoute>& routes)
{
    Json list = Json::array();
    for (const DesiredRoute& route : routes)
        list.push_back({{"destination", route.destination.ToText()},
                        {"nextHop", route.nextHop.ToText()},
                        {"metric", JsonOf(route.metric)},
                        {"store", JsonOf(route.store)}});
    return list;
}

/// Collects what differs of one adapter.
class AdapterComparison
{
public:
    AdapterComparison(const Machine& machine, const Adapter& adapter, const Target& target,
                      std::vector<Difference>& differences)
        : m_machine(machine), m_adapter(adapter), m_target(target), m_differences(differences)
    {
    }

    void Run()
    {
        const DesiredAdapter& desired = m_target.desired;
        if (desired.enabled && m_adapter.enabled != desired.enabled)
            Add("enabled", JsonOf(m_adapter.enabled), *desired.enabled);
        if (desired.connectionName && m_adapter.connectionName != desired.connectionName)
            Add("connectionName", JsonOf(m_adapter.connectionName), *desired.connectionName);
        if (desired.hardwareAddress && !HardwareAddressStands(m_adapter, *desired.hardwareAddress))
            Add("hardwareAddress",
                InUse(JsonOf(m_adapter.hardwareAddress),
                      m_adapter.driver.hardwareAddress ? JsonOf(m_adapter.driver.hardwareAddress) : Json("automatic")),
                JsonOf(*desired.hardwareAddress));
        for (const Family family : FAMILIES)
            CompareIp(family);
        if (desired.routes && !RoutesStand(m_adapter, *desired.routes))
            Add("routes", m_adapter.routes ? RoutesOf(StaticRoutes(m_adapter)) : Json(), RoutesOf(*desired.routes));
    }

private:
    void Add(std::string path, Json before, Json after)
    {
        m_differences.push_back({m_target.name, std::move(path), std::move(before), std::move(after)});
    }

    void CompareIp(Family family)
    {
        const DesiredIp& ip = m_target.desired.Of(family);
        const IpSettings& settings = m_adapter.Of(family);
        const std::string path = PathPrefixOf(family);
        if (ip.dhcp && !DhcpStands(m_adapter, *ip.dhcp))
            Add(path + "dhcp", InUse(JsonOf(settings.dhcp), JsonOf(settings.configured.dhcp)), *ip.dhcp);
        const bool asStored = !m_target.exact || family == Family::IPV6 || IsConfiguredExactly(m_adapter, ip);
        if (ip.addresses && (!asStored || !AddressesStand(m_adapter, family, *ip.addresses)))
            Add(path + "addresses", InUse(AddressesOf(settings), JsonOf(ConfiguredAddresses(m_adapter, family))),
                JsonOf(*ip.addresses));
        if (ip.gateways && (!asStored || !GatewaysStand(m_adapter, family, *ip.gateways)))
            Add(path + "gateways", InUse(GatewaysOf(m_adapter, family), JsonOf(settings.configured.gateways)),
                JsonOf(*ip.gateways));
        if (ip.dnsServers && !DnsServersStand(m_machine, m_adapter, family, *ip.dnsServers))
            Add(path + "dnsServers", InUse(JsonOf(settings.dnsServers), JsonOf(settings.configured.dnsServers)),
                JsonOf(*ip.dnsServers));
        if (ip.metric && !MetricStands(settings, *ip.metric))
            Add(path + "metric", InUse(JsonOf(settings.metric), JsonOf(settings.configured.metric)),
                JsonOf(*ip.metric));
        if (ip.mtu && !MtuStands(settings, *ip.mtu))
            Add(path + "mtu", InUse(JsonOf(settings.mtu), JsonOf(settings.configured.mtu)), *ip.mtu);
        CompareStored(ip, settings, path);
    }

    /// What the system reads from the registry when it sets the adapter up anew: configured is all that counts.
    void CompareStored(const DesiredIp& ip, const IpSettings& settings, const std::string& path)
    {
        if (ip.enabled && settings.enabled != ip.enabled)
            Add(path + "enabled", JsonOf(settings.enabled), *ip.enabled);
        if (ip.dnsSuffix && !DnsSuffixStands(settings, *ip.dnsSuffix))
            Add(path + "dnsSuffix", InUse(JsonOf(settings.dnsSuffix), JsonOf(settings.configured.dnsSuffix)),
                *ip.dnsSuffix);
        if (ip.netbios && !NetbiosStands(settings, *ip.netbios))
            Add(path + "netbios", InUse(JsonOf(settings.netbios), JsonOf(settings.configured.netbios)),
                JsonOf(*ip.netbios));
    }

    const Machine& m_machine;
    const Adapter& m_adapter;
    const Target& m_target;
    std::vector<Difference>& m_differences;
};

void CompareIdentity(const Identity& now, const DesiredIdentity& wanted, std::vector<Difference>& differences)
{
    const auto compare = [&](const char* path, const std::optional<std::string>& inUse,
                             const std::optional<std::string>& configured, const std::optional<std::string>& name) {
        if (name && configured != name)
            differences.push_back({"", path, InUse(JsonOf(inUse), JsonOf(configured)), *name});
    };
    compare("identity.computerName", now.computerName, now.configured.computerName, wanted.computerName);
    compare("identity.primaryDnsSuffix", now.primaryDnsSuffix, now.configured.primaryDnsSuffix,
            wanted.primaryDnsSuffix);
    compare("identity.workgroup", now.workgroup, now.workgroup, wanted.workgroup);
}

} // namespace

const Adapter* FindAdapter(const Machine& machine, const Guid& guid)
{
    const auto found = std::ranges::find(machine.adapters, guid, &Adapter::guid);
    return found != machine.adapters.end() ? &*found : nullptr;
}

std::vector<Difference> Differences(const Machine& machine, const std::vector<Target>& targets,
                                    const DesiredIdentity& identity)
{
    std::vector<Difference> differences;
    for (const Target& target : targets)
    {
        if (const Adapter* const adapter = FindAdapter(machine, target.guid))
            AdapterComparison(machine, *adapter, target, differences).Run();
        else
            differences.push_back({target.name, "adapter", Json(), "present"});
    }
    CompareIdentity(machine.identity, identity, differences);
    return differences;
}

} // namespace zelk
