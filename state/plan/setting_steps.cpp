#include <state/plan/setting_steps.h>

#include <algorithm>

#include <state/desired/standing.h>
#include <state/plan/route_command.h>

namespace zelk
{
namespace
{

using Texts = std::vector<std::string>;

std::string PathOf(Family family, const char* member)
{
    return PathPrefixOf(family) + member;
}

/// Plans the routes of one adapter.
class RoutePlanner
{
public:
    RoutePlanner(const Adapter& adapter, bool flushed, StepList& steps)
        : m_adapter(adapter), m_flushed(flushed), m_present(StaticRoutes(adapter)), m_steps(steps)
    {
    }

    /// What is not wanted, and what is to be made anew.
    void PlanRemovals(const std::vector<DesiredRoute>& wanted)
    {
        for (const Route& route : m_present)
        {
            const auto same =
                std::ranges::find_if(wanted, [&](const DesiredRoute& one) { return IsSameWay(route, one); });
            if (same == wanted.end() || (m_flushed && !RouteStands(m_adapter, route, *same)))
                Remove(route);
        }
    }

    void PlanAdditions(const std::vector<DesiredRoute>& wanted)
    {
        for (const DesiredRoute& route : wanted)
        {
            const auto same = std::ranges::find_if(m_present, [&](const Route& one) { return IsSameWay(one, route); });
            const bool stands = same != m_present.end() && RouteStands(m_adapter, *same, route);
            if (same == m_present.end() || (!stands && m_flushed))
                Add(route);
            else if (!stands)
                Change(*same, route);
        }
    }

private:
    /// A new one is stored unless it is not to be.
    void Add(const DesiredRoute& route)
    {
        PlanRouteCommand(RouteVerb::ADD, route, m_steps);
        if (!m_steps.IsBeforeVista() && route.store != RouteStore::ACTIVE && route.nextHop.IsIpv4())
            Store(route);
    }

    /// What is not named stays as it is.
    void Change(const Route& now, const DesiredRoute& wanted)
    {
        const bool active = now.store != RouteStore::PERSISTENT;
        const bool wasStored = now.store != RouteStore::ACTIVE;
        const bool stored = wanted.store ? wanted.store != RouteStore::ACTIVE : wasStored;
        const bool otherMetric = wanted.metric && now.metric != wanted.metric;
        DesiredRoute made = wanted;
        if (!wanted.metric)
            made.metric = now.metric;
        if (m_steps.IsBeforeVista())
        {
            Remove(now);
            made.store = stored ? RouteStore::PERSISTENT : RouteStore::ACTIVE;
            return Add(made);
        }
        if (!active || otherMetric)
            PlanRouteCommand(active ? RouteVerb::CHANGE : RouteVerb::ADD, made, m_steps);
        if (!now.nextHop.IsIpv4())
            return;
        if (stored && (!wasStored || otherMetric))
            Store(made);
        else if (!stored && wasStored)
            Unstore(now);
    }

    void Remove(const Route& route)
    {
        const bool old = m_steps.IsBeforeVista(); // there one command removes both
        if (old || route.store != RouteStore::PERSISTENT)
            PlanRouteCommand(RouteVerb::REMOVE, {route.destination, route.nextHop, {}, {}}, m_steps);
        if (!old && route.store != RouteStore::ACTIVE)
            Unstore(route);
    }

    void Store(const DesiredRoute& route)
    {
        m_steps.Add("Stores the " + TextOf(route), StoredRoute{route.destination, route.nextHop, route.metric, true},
                    {"routes"});
    }

    void Unstore(const Route& route)
    {
        m_steps.Add("Removes the stored " + TextOf({route.destination, route.nextHop, {}, {}}),
                    StoredRoute{route.destination, route.nextHop, std::nullopt, false}, {"routes"});
    }

    const Adapter& m_adapter;
    bool m_flushed;
    std::vector<Route> m_present;
    StepList& m_steps;
};

/// Plans the DNS servers of one family.
class DnsPlanner
{
public:
    DnsPlanner(const Adapter& adapter, Family family, StepList& steps)
        : m_adapter(adapter), m_family(family), m_steps(steps)
    {
    }

    void Plan(const DesiredAdapter& desired)
    {
        const auto* const servers = std::get_if<Servers>(&*desired.Of(m_family).dnsServers);
        if (servers == nullptr)
            return LeaveToNetwork(desired.ipv4.dhcp.value_or(DhcpStands(m_adapter, true)));
        const std::size_t standing = Standing(*servers);
        if (standing == 0)
            Command("Sets the DNS server " + servers->front().ToText() + " in place of all others",
                    {"set", Object(), m_steps.ConnectionName(), "static", servers->front().ToText()});
        for (std::size_t i = std::max<std::size_t>(standing, 1); i < servers->size(); ++i)
            Command(
                "Adds the DNS server " + (*servers)[i].ToText(),
                {"add", Object(), m_steps.ConnectionName(), (*servers)[i].ToText(), "index=" + std::to_string(i + 1)});
    }

private:
    using Servers = std::vector<IpAddress>;

    /// Before Vista only a DHCP client may be told to take what the network gives.
    void LeaveToNetwork(bool client)
    {
        Texts arguments = {"set", Object(), m_steps.ConnectionName(), "dhcp"};
        if (m_steps.IsBeforeVista() && !client)
        {
            arguments.back() = "static";
            arguments.emplace_back("none");
        }
        Netsh("Leaves the DNS servers to the network", std::move(arguments));
    }

    /// How many of them, from the first on, are the servers that it has.
    [[nodiscard]] std::size_t Standing(const Servers& wanted) const
    {
        const IpSettings& settings = m_adapter.Of(m_family);
        const auto& configured = settings.configured.dnsServers;
        const auto* const present = configured ? std::get_if<Servers>(&*configured) : nullptr;
        const bool begins = present != nullptr && present->size() < wanted.size() &&
                            std::equal(present->begin(), present->end(), wanted.begin());
        return begins && (!IsUp(m_adapter) || settings.dnsServers == *present) ? present->size() : 0;
    }

    /// Windows 7 has another word than Vista, and asks a server before it takes it unless it is told not to.
    [[nodiscard]] std::string Object() const
    {
        return m_steps.IsBeforeVista() ? "dns" : m_steps.IsBeforeWindows7() ? "dnsserver" : "dnsservers";
    }

    void Command(std::string text, Texts arguments)
    {
        if (!m_steps.IsBeforeWindows7())
            arguments.emplace_back("validate=no");
        Netsh(std::move(text), std::move(arguments));
    }

    void Netsh(std::string text, Texts arguments)
    {
        m_steps.Netsh(m_family, std::move(text), std::move(arguments), {PathOf(m_family, "dnsServers")});
    }

    const Adapter& m_adapter;
    Family m_family;
    StepList& m_steps;
};

} // namespace

void PlanDnsServers(const Machine& machine, const Adapter& adapter, Family family, const DesiredAdapter& desired,
                    StepList& steps)
{
    if (!DnsServersStand(machine, adapter, family, *desired.Of(family).dnsServers))
        DnsPlanner(adapter, family, steps).Plan(desired);
}

void PlanInterface(const Adapter& adapter, Family family, const DesiredIp& wanted, StepList& steps)
{
    const IpSettings& settings = adapter.Of(family);
    if (wanted.metric && !MetricStands(settings, *wanted.metric))
    {
        const auto* const metric = std::get_if<std::uint32_t>(&*wanted.metric);
        const std::string number = std::to_string(metric != nullptr ? *metric : 0);
        steps.Netsh(family,
                    metric != nullptr ? "Sets the interface metric " + number
                                      : "Leaves the interface metric to the system",
                    {"set", "interface", steps.ConnectionName(), "metric=" + number}, {PathOf(family, "metric")});
    }
    if (wanted.mtu && !MtuStands(settings, *wanted.mtu))
        steps.Netsh(
            family, "Sets the MTU " + std::to_string(*wanted.mtu),
            {"set", "subinterface", steps.ConnectionName(), "mtu=" + std::to_string(*wanted.mtu), "store=persistent"},
            {PathOf(family, "mtu")});
}

void PlanStored(const Adapter& adapter, const DesiredIp& wanted, StepList& steps)
{
    if (wanted.dnsSuffix && !DnsSuffixStands(adapter.ipv4, *wanted.dnsSuffix))
        steps.Add(wanted.dnsSuffix->empty() ? "Removes the DNS suffix of the connection"
                                            : "Stores the DNS suffix " + *wanted.dnsSuffix + " of the connection",
                  StoredSetting{*wanted.dnsSuffix}, {"ipv4.dnsSuffix"});
    if (wanted.netbios && !NetbiosStands(adapter.ipv4, *wanted.netbios))
        steps.Add(*wanted.netbios == NetbiosSetting::DHCP      ? "Leaves NetBIOS over TCP/IP to the DHCP server"
                  : *wanted.netbios == NetbiosSetting::ENABLED ? "Stores that NetBIOS over TCP/IP is enabled"
                                                               : "Stores that NetBIOS over TCP/IP is disabled",
                  StoredSetting{*wanted.netbios}, {"ipv4.netbios"});
}

void PlanRouteRemovals(const Adapter& adapter, const std::vector<DesiredRoute>& wanted, bool flushed, StepList& steps)
{
    if (!RoutesStand(adapter, wanted))
        RoutePlanner(adapter, flushed, steps).PlanRemovals(wanted);
}

void PlanRouteAdditions(const Adapter& adapter, const std::vector<DesiredRoute>& wanted, bool flushed, StepList& steps)
{
    if (!RoutesStand(adapter, wanted))
        RoutePlanner(adapter, flushed, steps).PlanAdditions(wanted);
}

} // namespace zelk
