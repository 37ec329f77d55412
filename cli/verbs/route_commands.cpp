#include "verbs/route_commands.h"

#include <algorithm>
#include <string>

#include "adapters/library_call.h"
#include "answer/cell_text.h"
#include "parser/ip_argument.h"
#include "system/number.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

unsigned long ParseMetric(const std::string& sText)
{
    const auto ulMetric = ParseNumber(sText.empty() ? "0" : sText);
    if (!ulMetric)
        throw UsageError("--metric", Quoted(sText) + " is not a number from 0 to 4294967295");
    return *ulMetric;
}

/// What the user gives for a new route.
zelk::Route ParseRoute(const std::string& sDestination, const std::string& sNextHop, const std::string& sMetric)
{
    zelk::Route route;
    route.destination = ParseNetwork("DESTINATION", sDestination);
    route.nextHop = ParseAddress("NEXTHOP", sNextHop);
    if (route.nextHop.GetFamily() != route.destination.address.GetFamily())
        throw UsageError("NEXTHOP", "destination and next hop have to be of the same family, IPv4 or IPv6");
    route.metric = ParseMetric(sMetric);
    return route;
}

std::string TextOf(const zelk::Route& route)
{
    return route.destination.ToText() + " via " + route.nextHop.ToText();
}

/// The metric is not compared: the library raises it until the system takes it.
Aspect RoutePresent(const zelk::Adapter& adapter, const std::string& sRoute)
{
    return AdapterAspect(
        adapter, "route", "Route",
        [sRoute](const zelk::Adapter& now) {
            const bool bPresent = now.routes && std::ranges::find(*now.routes, sRoute, TextOf) != now.routes->end();
            return bPresent ? Json(sRoute) : Json();
        },
        sRoute);
}

TOLVA::ROUTE_INFO RouteInfoOf(const zelk::Adapter& adapter, const zelk::Route& route)
{
    TOLVA::ROUTE_INFO info;
    Call("GetAdapterIndex", &adapter, [&] { return TOLVA::GetAdapterIndex(NicInfoOf(adapter), info.ulIndex); });
    info.Destination = ToVelmor(route.destination.address);
    info.PrefixLength = route.destination.length;
    info.NextHop = ToVelmor(route.nextHop);
    info.ulMetric = route.metric.value_or(0);
    return info;
}

Change AddRoute(const zelk::Adapter& adapter, const zelk::Route& route)
{
    const std::string sRoute = TextOf(route);
    return {.sOperation = "AddAdapterRoute",
            .adapter = adapter,
            .sDoing = "Adding the route",
            .sDone = "Adapter " + Quoted(adapter) + " has the route " + sRoute + '.',
            .aspects = {RoutePresent(adapter, sRoute)},
            .operation = [info = NicInfoOf(adapter),
                          wanted = RouteInfoOf(adapter, route)] { return TOLVA::AddAdapterRoute(info, wanted); },
            .reach = route.destination.length == 0 ? Reach::SESSION : Reach::SETTINGS,
            .bNeedsIpv6 = !route.nextHop.IsIpv4()};
}

void AddAdd(Command noun)
{
    Command verb = noun.AddVerb({"add", "Add a route to one adapter", "route add lan0 10.0.0.0/8 192.168.1.1 --check"});
    const auto adapter = AddAdapterArgument(verb);
    const auto destination = verb.AddArgument(
        {"DESTINATION", "The destination network; 0.0.0.0/0 or ::/0 for a default route", "ADDRESS/PREFIX"});
    const auto nextHop = verb.AddArgument({"NEXTHOP", "Address of the gateway", "ADDRESS"});
    const auto metric = verb.AddOption({"--metric", "The metric, 0 by default; one that is too low is raised", "N"});
    MakeChangeVerb(verb, [=] {
        const zelk::Route route = ParseRoute(destination(), nextHop(), metric());
        return AddRoute(adapter(), route);
    });
}

} // namespace

void AddRouteCommands(Command tool)
{
    Command noun = tool.AddNoun({"route", "Routes of an adapter", "route list lan0 --json"});
    AddAdapterListVerb(noun, {{"list", "Show the routes of one adapter", "route list lan0"},
                              {"routes"},
                              ShownFields<zelk::Route>(),
                              "route",
                              "The adapter has no routes."});
    AddAdd(noun);
}

} // namespace zelkctl
