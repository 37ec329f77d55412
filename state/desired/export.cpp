#include <state/desired/export.h>

#include <algorithm>
#include <functional>

#include <state/desired/adapter_name.h>
#include <state/desired/checks.h>
#include <state/desired/object_reader.h>
#include <state/desired/standing.h>

namespace zelk
{
namespace
{

/// The interface's own MTU; of one that is not up nobody knows.
std::optional<std::uint32_t> MtuOf(const IpSettings& settings)
{
    constexpr std::uint32_t GREATEST = 65535;
    return settings.enabled == true && settings.mtu <= GREATEST ? settings.mtu : std::nullopt;
}

std::optional<AutomaticOr<std::uint32_t>> MetricOf(const IpSettings& settings)
{
    if (!settings.automaticMetric)
        return settings.configured.metric;
    if (*settings.automaticMetric)
        return Automatic();
    return settings.metric ? std::optional<AutomaticOr<std::uint32_t>>(*settings.metric) : std::nullopt;
}

DesiredIp ConfigurationOf(const Adapter& adapter, Family family)
{
    const IpSettings& settings = adapter.Of(family);
    DesiredIp ip;
    if (family == Family::IPV4)
        ip.dhcp = settings.configured.dhcp;
    if (family == Family::IPV6 || ip.dhcp == false) // static addresses say that there is no DHCP
        ip.addresses = ConfiguredAddresses(adapter, family);
    ip.gateways = settings.configured.gateways;
    ip.dnsServers = settings.configured.dnsServers;
    ip.metric = MetricOf(settings);
    ip.mtu = MtuOf(settings);
    if (family == Family::IPV4)
    {
        ip.dnsSuffix = settings.configured.dnsSuffix;
        ip.netbios = settings.configured.netbios;
    }
    else if (adapter.index && adapter.enabled != false)
    {
        ip.enabled = settings.enabled;
        if (!ip.addresses && settings.addresses && settings.addresses->empty()) // as where IPv6 is not bound
            ip.addresses.emplace();
        if (!ip.gateways && settings.gateways && settings.gateways->empty())
            ip.gateways.emplace();
    }
    return ip;
}

std::optional<std::vector<DesiredRoute>> RoutesOf(const Adapter& adapter)
{
    if (!adapter.routes)
        return std::nullopt;
    std::vector<DesiredRoute> routes;
    for (const Route& route : StaticRoutes(adapter))
    {
        DesiredRoute desired{route.destination, route.nextHop, route.metric, std::nullopt};
        if (route.nextHop.IsIpv4())
            desired.store = route.store == RouteStore::ACTIVE ? RouteStore::ACTIVE : RouteStore::PERSISTENT;
        routes.push_back(desired);
    }
    return routes;
}

std::string UniqueName(const Machine& machine, const Adapter& adapter)
{
    const std::string name = NameOf(adapter);
    const auto found = FindAdapters(machine, name);
    const bool unique = found.size() == 1 && found.front() == &adapter;
    return unique || !adapter.guid ? name : "guid:" + adapter.guid->ToText();
}

/// Empties each part of an adapter that does not stand as it is written down.
class Sieve
{
public:
    Sieve(const Machine& machine, const Adapter& adapter, DesiredAdapter& desired, std::vector<std::string>& leftOut)
        : m_machine(machine), m_adapter(adapter), m_desired(desired), m_leftOut(leftOut)
    {
    }

    void Run()
    {
        for (const Family family : FAMILIES)
            SieveIp(family);
        Keep(m_desired.routes, "routes", [&](const auto& value) { return RoutesStand(m_adapter, value); });
        Keep(m_desired.hardwareAddress, "hardwareAddress",
             [&](const auto& value) { return HardwareAddressStands(m_adapter, value); });
    }

    /// Leaves out what the checks refuse, by its place in the state of this adapter.
    void Drop(std::string_view place)
    {
        for (const Family family : FAMILIES)
            DropOfIp(family, place);
        if (place.starts_with("/routes"))
            LeaveOut(m_desired.routes, "routes");
        if (place.starts_with("/hardwareAddress"))
            LeaveOut(m_desired.hardwareAddress, "hardwareAddress");
        if (place == "/ipv4") // not a DHCP client, and its addresses are left out
            LeaveOut(m_desired.ipv4.dhcp, "ipv4.dhcp");
        if (place == "/ipv6") // not bound, but not without addresses and gateways
            LeaveOut(m_desired.ipv6.enabled, "ipv6.enabled");
    }

private:
    template <class T, class Stands>
    void Keep(std::optional<T>& value, const std::string& path, Stands&& stands)
    {
        if (value && !stands(*value))
            LeaveOut(value, path);
    }

    template <class T>
    void LeaveOut(std::optional<T>& value, const std::string& path)
    {
        if (!value)
            return;
        value.reset();
        m_leftOut.push_back(NameOf(m_adapter) + ": " + path +
                            " is left out: what is in use and what is configured differ, "
                            "or are not as a desired state may have them.");
    }

    void SieveIp(Family family)
    {
        DesiredIp& ip = m_desired.Of(family);
        const IpSettings& settings = m_adapter.Of(family);
        const std::string path = PathPrefixOf(family);
        Keep(ip.dhcp, path + "dhcp", [&](bool value) { return DhcpStands(m_adapter, value); });
        Keep(ip.addresses, path + "addresses",
             [&](const auto& value) { return AddressesStand(m_adapter, family, value); });
        Keep(ip.gateways, path + "gateways",
             [&](const auto& value) { return GatewaysStand(m_adapter, family, value); });
        Keep(ip.dnsServers, path + "dnsServers",
             [&](const auto& value) { return DnsServersStand(m_machine, m_adapter, family, value); });
        Keep(ip.metric, path + "metric", [&](const auto& value) { return MetricStands(settings, value); });
        Keep(ip.mtu, path + "mtu", [&](std::uint32_t value) { return MtuStands(settings, value); });
        Keep(ip.dnsSuffix, path + "dnsSuffix", [&](const auto& value) { return DnsSuffixStands(settings, value); });
        Keep(ip.netbios, path + "netbios", [&](NetbiosSetting value) { return NetbiosStands(settings, value); });
    }

    void DropOfIp(Family family, std::string_view place)
    {
        DesiredIp& ip = m_desired.Of(family);
        const std::string start = family == Family::IPV4 ? "/ipv4/" : "/ipv6/";
        const auto drop = [&](auto& value, const std::string& name) {
            if (place.starts_with(start + name))
                LeaveOut(value, PathPrefixOf(family) + name);
        };
        drop(ip.addresses, "addresses");
        drop(ip.gateways, "gateways");
        drop(ip.dnsServers, "dnsServers");
        drop(ip.metric, "metric");
        drop(ip.mtu, "mtu");
        drop(ip.dnsSuffix, "dnsSuffix");
    }

    const Machine& m_machine;
    const Adapter& m_adapter;
    DesiredAdapter& m_desired;
    std::vector<std::string>& m_leftOut;
};

/// Leaves out what the checks refuse. They look at all adapters together: two may have stored the same address. Once it
/// is left out of one of them, it can be refused for the other one, so they look again.
void LeaveOutFaults(const Machine& machine, const std::vector<const Adapter*>& adapters, Export& exported)
{
    std::vector<Fault> faults;
    CheckDesiredState(machine, adapters, exported.state, faults);
    const std::size_t before = exported.leftOut.size();
    for (const Fault& fault : faults)
        for (std::size_t i = 0; i < adapters.size(); ++i)
            if (const std::string start = "/adapters/" + std::to_string(i); fault.place.starts_with(start + '/'))
                Sieve(machine, *adapters[i], exported.state.adapters[i], exported.leftOut)
                    .Drop(std::string_view(fault.place).substr(start.size()));
    if (exported.leftOut.size() > before)
        LeaveOutFaults(machine, adapters, exported);
}

DesiredIdentity IdentityOf(const Machine& machine)
{
    const Identity& identity = machine.identity;
    DesiredIdentity desired{identity.configured.computerName, identity.configured.primaryDnsSuffix, identity.workgroup};
    std::vector<Fault> faults;
    DesiredState alone;
    alone.identity = desired;
    CheckDesiredState(machine, {}, alone, faults);
    for (const Fault& fault : faults)
    {
        if (fault.place == "/identity/computerName")
            desired.computerName.reset();
        if (fault.place == "/identity/primaryDnsSuffix")
            desired.primaryDnsSuffix.reset();
        if (fault.place == "/identity/workgroup")
            desired.workgroup.reset();
    }
    return desired;
}

} // namespace

DesiredAdapter ConfigurationOf(const Adapter& adapter)
{
    DesiredAdapter desired;
    desired.adapter = adapter.guid ? "guid:" + adapter.guid->ToText() : NameOf(adapter);
    desired.enabled = adapter.enabled;
    desired.ipv4 = ConfigurationOf(adapter, Family::IPV4);
    desired.ipv6 = ConfigurationOf(adapter, Family::IPV6);
    desired.routes = RoutesOf(adapter);
    if (adapter.driver.hardwareAddress)
        desired.hardwareAddress = *adapter.driver.hardwareAddress;
    else if (adapter.classKey)
        desired.hardwareAddress = Automatic();
    return desired;
}

std::vector<const Adapter*> ExportedAdapters(const Machine& machine)
{
    std::vector<const Adapter*> adapters;
    for (const Adapter& adapter : machine.adapters)
        if (!adapter.hidden && adapter.guid && adapter.type != AdapterType::LOOPBACK)
            adapters.push_back(&adapter);
    return adapters;
}

Export ExportState(const Machine& machine, const std::vector<const Adapter*>& adapters, bool identity)
{
    Export result;
    for (const Adapter* adapter : adapters)
    {
        DesiredAdapter desired = ConfigurationOf(*adapter);
        desired.adapter = UniqueName(machine, *adapter);
        if (!machine.environment.protocolBinding) // as it is, because nothing could change it
            desired.ipv6.enabled.reset();
        Sieve(machine, *adapter, desired, result.leftOut).Run();
        result.state.adapters.push_back(std::move(desired));
    }
    LeaveOutFaults(machine, adapters, result);
    if (identity)
        result.state.identity = IdentityOf(machine);
    return result;
}

} // namespace zelk
