#include <state/plan/route_command.h>

namespace zelk
{
namespace
{

using Texts = std::vector<std::string>;

Texts TouchesOf(const DesiredRoute& route)
{
    if (route.destination.length > 0)
        return {"routes"};
    return {route.nextHop.IsIpv4() ? "ipv4.gateways" : "ipv6.gateways"};
}

/// It keeps IPv4 routes in a store of its own that nothing documented can read; so it makes the active route only, and
/// removes both.
void PlanNetsh(RouteVerb verb, const DesiredRoute& route, std::string text, StepList& steps)
{
    constexpr const char* VERBS[] = {"add", "set", "delete"};
    Texts arguments = {VERBS[static_cast<std::size_t>(verb)], "route", route.destination.ToText(),
                       steps.ConnectionName()};
    if (!route.nextHop.IsUnspecified())
        arguments.push_back(route.nextHop.ToText());
    if (verb != RouteVerb::REMOVE && route.metric)
        arguments.push_back("metric=" + std::to_string(*route.metric));
    if (verb != RouteVerb::REMOVE && (route.nextHop.IsIpv4() || route.store == RouteStore::ACTIVE))
        arguments.emplace_back("store=active");
    steps.Netsh(route.nextHop.GetFamily(), std::move(text), std::move(arguments), TouchesOf(route));
}

/// Before Vista netsh knows no routes.
void PlanOldCommand(RouteVerb verb, const DesiredRoute& route, std::string text, StepList& steps)
{
    constexpr const char* VERBS[] = {"ADD", "CHANGE", "DELETE"};
    Texts arguments;
    if (verb == RouteVerb::ADD && route.store != RouteStore::ACTIVE)
        arguments.emplace_back("-p");
    arguments.insert(arguments.end(), {VERBS[static_cast<std::size_t>(verb)], route.destination.address.ToText(),
                                       "MASK", MaskOf(route.destination.length).ToText(), route.nextHop.ToText()});
    if (verb != RouteVerb::REMOVE && route.metric)
        arguments.insert(arguments.end(), {"METRIC", std::to_string(*route.metric)});
    if (steps.Index())
        arguments.insert(arguments.end(), {"IF", std::to_string(*steps.Index())});
    steps.Add(std::move(text), Command{Program::ROUTE, std::move(arguments)}, TouchesOf(route));
}

} // namespace

void PlanRouteCommand(RouteVerb verb, const DesiredRoute& route, StepList& steps)
{
    constexpr const char* DOING[] = {"Adds the ", "Changes the metric of the ", "Removes the "};
    std::string text = DOING[static_cast<std::size_t>(verb)] + TextOf(route);
    if (steps.IsBeforeVista())
        PlanOldCommand(verb, route, std::move(text), steps);
    else
        PlanNetsh(verb, route, std::move(text), steps);
}

DesiredRoute DefaultRoute(const Gateway& gateway)
{
    const IpPrefix everywhere{IpAddress::Unspecified(gateway.address.GetFamily()), 0};
    return {everywhere, gateway.address, gateway.metric,
            gateway.address.IsIpv4() ? std::optional(RouteStore::ACTIVE) : std::nullopt};
}

std::string TextOf(const DesiredRoute& route)
{
    if (route.destination.length == 0)
        return "gateway " + route.nextHop.ToText();
    return "route " + route.destination.ToText() +
           (route.nextHop.IsUnspecified() ? " on the link" : " through " + route.nextHop.ToText());
}

} // namespace zelk
