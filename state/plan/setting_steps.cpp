#include <state/plan/setting_steps.h>

#include <algorithm>

#include <state/desired/standing.h>

namespace zelk
{
namespace
{

using Texts = std::vector<std::string>;

std::string PathOf(Family family, const char* member)
{
    return (family == Family::IPV4 ? "ipv4." : "ipv6.") + std::string(member);
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
        const bool stored = route.store != RouteStore::ACTIVE;
        if (m_steps.IsBeforeVista())
            return RouteCommand(stored ? Texts{"-p", "ADD"} : Texts{"ADD"}, route);
        NetshRoute("add", "Adds the route ", route);
        if (stored && route.nextHop.IsIpv4())
            Store(route, route.metric);
    }

    void Change(const Route& now, const DesiredRoute& wanted)
    {
        if (m_steps.IsBeforeVista())
        {
            Remove(now);
            return Add(wanted);
        }
        const bool active = now.store != RouteStore::PERSISTENT;
        const bool wasStored = now.store != RouteStore::ACTIVE;
        const bool stored = wanted.store ? wanted.store != RouteStore::ACTIVE : wasStored;
        const bool otherMetric = wanted.metric && now.metric != wanted.metric;
        if (!active)
            NetshRoute("add", "Adds the route ", wanted);
        else if (otherMetric)
            NetshRoute("set", "Changes the metric of the route ", wanted);
        if (!now.nextHop.IsIpv4())
            return;
        if (stored && (!wasStored || otherMetric))
            Store(wanted, wanted.metric ? wanted.metric : now.metric);
        else if (!stored && wasStored)
            Unstore(now);
    }

    void Remove(const Route& route)
    {
        const DesiredRoute old{route.destination, route.nextHop, std::nullopt, std::nullopt};
        if (m_steps.IsBeforeVista())
            return RouteCommand({"DELETE"}, old);
        if (route.store != RouteStore::PERSISTENT)
            m_steps.Netsh(route.nextHop.GetFamily(), "Removes the route " + TextOf(old), Arguments("delete", old),
                          {"routes"});
        if (route.store != RouteStore::ACTIVE)
            Unstore(route);
    }

    /// The command keeps IPv4 routes in a store of its own that nothing documented can read; so it makes the active
    /// route, and the stored one is written where the route command keeps it.
    void NetshRoute(const char* verb, const char* text, const DesiredRoute& route)
    {
        Texts arguments = Arguments(verb, route);
        if (route.metric)
            arguments.push_back("metric=" + std::to_string(*route.metric));
        if (route.nextHop.IsIpv4() || route.store == RouteStore::ACTIVE)
            arguments.emplace_back("store=active");
        m_steps.Netsh(route.nextHop.GetFamily(), text + TextOf(route), std::move(arguments), {"routes"});
    }

    [[nodiscard]] Texts Arguments(const char* verb, const DesiredRoute& route) const
    {
        Texts arguments = {verb, "route", route.destination.ToText(), m_steps.ConnectionName()};
        if (!route.nextHop.IsUnspecified())
            arguments.push_back(route.nextHop.ToText());
        return arguments;
    }

    void Store(const DesiredRoute& route, std::optional<std::uint32_t> metric)
    {
        m_steps.Add("Stores the route " + TextOf(route), StoredRoute{route.destination, route.nextHop, metric, true},
                    {"routes"});
    }

    void Unstore(const Route& route)
    {
        m_steps.Add("Removes the stored route " + TextOf({route.destination, route.nextHop, {}, {}}),
                    StoredRoute{route.destination, route.nextHop, std::nullopt, false}, {"routes"});
    }

    /// Before Vista netsh knows no routes.
    void RouteCommand(Texts verb, const DesiredRoute& route)
    {
        const std::string text = (verb.back() == "ADD" ? "Adds the route " : "Removes the route ") + TextOf(route);
        const IpPrefix mask =
            IpPrefix{IpAddress(IpAddress::Ipv4Bytes{255, 255, 255, 255}), route.destination.length}.Network();
        verb.insert(verb.end(),
                    {route.destination.address.ToText(), "MASK", mask.address.ToText(), route.nextHop.ToText()});
        if (route.metric)
            verb.insert(verb.end(), {"METRIC", std::to_string(*route.metric)});
        verb.insert(verb.end(), {"IF", std::to_string(m_steps.Index())});
        m_steps.Add(text, Command{Program::ROUTE, std::move(verb)}, {"routes"});
    }

    static std::string TextOf(const DesiredRoute& route)
    {
        return route.destination.ToText() +
               (route.nextHop.IsUnspecified() ? " on the link" : " through " + route.nextHop.ToText());
    }

    const Adapter& m_adapter;
    bool m_flushed;
    std::vector<Route> m_present;
    StepList& m_steps;
};

} // namespace

void PlanDnsServers(const Machine& machine, const Adapter& adapter, Family family,
                    const AutomaticOr<std::vector<IpAddress>>& wanted, StepList& steps)
{
    if (DnsServersStand(machine, adapter, family, wanted))
        return;
    const std::string object = steps.IsBeforeVista() ? "dns" : "dnsservers";
    const Texts touches = {PathOf(family, "dnsServers")};
    const auto* const servers = std::get_if<std::vector<IpAddress>>(&wanted);
    if (servers == nullptr)
        return steps.Netsh(family, "Leaves the DNS servers to the network",
                           {"set", object, steps.ConnectionName(), "dhcp"}, touches);
    steps.Netsh(family, "Sets the DNS server " + servers->front().ToText() + " in place of all others",
                {"set", object, steps.ConnectionName(), "static", servers->front().ToText()}, touches);
    for (std::size_t i = 1; i < servers->size(); ++i)
        steps.Netsh(family, "Adds the DNS server " + (*servers)[i].ToText(),
                    {"add", object, steps.ConnectionName(), (*servers)[i].ToText(), "index=" + std::to_string(i + 1)},
                    touches);
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
