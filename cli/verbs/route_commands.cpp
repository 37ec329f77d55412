#include "verbs/route_commands.h"

#include <algorithm>
#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

#include "adapters/adapter.h"
#include "adapters/library_call.h"
#include "answer/json_value.h"
#include "parser/command.h"
#include "parser/ip_argument.h"
#include "records/route_record.h"
#include "system/number.h"
#include "system/text.h"

namespace zelkctl
{
namespace
{

/// The user's words for a new route.
struct RouteTexts
{
    std::string sDestination;
    std::string sNextHop;
    std::string sMetric;
};

std::vector<TOLVA::ROUTE_INFO> Routes(const Adapter& adapter)
{
    std::vector<TOLVA::ROUTE_INFO> routes;
    Call("GetAdapterRoutes", &adapter, [&] { return TOLVA::GetAdapterRoutes(adapter.info, routes); });
    return routes;
}

unsigned long ParseMetric(const std::string& sText)
{
    const auto ulMetric = ParseNumber(sText.empty() ? "0" : sText);
    if (!ulMetric)
        throw WrongUse("--metric", Quoted(sText) + " is not 0 to 4294967295");
    return *ulMetric;
}

/// All but the index, which only the adapter can tell.
TOLVA::ROUTE_INFO ParseRoute(const RouteTexts& texts)
{
    const Network destination = ParseNetwork("DESTINATION", texts.sDestination);
    TOLVA::ROUTE_INFO route;
    route.Destination = destination.address;
    route.PrefixLength = destination.prefixLength;
    route.NextHop = ParseAddress("NEXTHOP", texts.sNextHop);
    if (route.NextHop.family() != route.Destination.family())
        throw WrongUse("NEXTHOP", "destination and next hop are not of one family, IPv4 or IPv6");
    route.ulMetric = ParseMetric(texts.sMetric);
    return route;
}

std::string Describe(const TOLVA::ROUTE_INFO& route)
{
    const Json record = RecordOf(route);
    return TextOf(record["destination"]) + " via " + TextOf(record["nextHop"]);
}

/// The metric is not in view: the library raises it until the system takes it.
Aspect RoutePresent(const Adapter& adapter, const std::string& sRoute)
{
    return {.field = {"route", "Route"},
            .read =
                [=] {
                    std::vector<TOLVA::ROUTE_INFO> routes;
                    const bool bThere = TOLVA::GetAdapterRoutes(adapter.info, routes) &&
                                        std::ranges::find(routes, sRoute, Describe) != routes.end();
                    return bThere ? Json(sRoute) : Json();
                },
            .wanted = sRoute};
}

Change AddRoute(const Adapter& adapter, TOLVA::ROUTE_INFO route)
{
    Call("GetAdapterIndex", &adapter, [&] { return TOLVA::GetAdapterIndex(adapter.info, route.ulIndex); });
    const std::string sRoute = Describe(route);
    return {.sOperation = "AddAdapterRoute",
            .adapter = adapter,
            .sDoing = "Adding the route",
            .sDone = "Adapter " + Quoted(adapter) + " has the route " + sRoute + '.',
            .aspects = {RoutePresent(adapter, sRoute)},
            .operation = [=] { return TOLVA::AddAdapterRoute(adapter.info, route); },
            .reach = route.PrefixLength == 0 ? Reach::SESSION : Reach::SETTINGS,
            .bNeedsIpv6 = route.Destination.is_ipv6()};
}

void AddAdd(CLI::App& noun, Output& output)
{
    CLI::App& verb =
        AddVerb(noun, {"add", "Add a route to one adapter", "route add lan0 10.0.0.0/8 192.168.1.1 --check"});
    auto adapter = AddAdapterArgument(verb);
    const auto destination =
        AddArgument(verb, "DESTINATION", "Where it leads, 0.0.0.0/0 or ::/0 for everywhere", "ADDRESS/PREFIX");
    const auto nextHop = AddArgument(verb, "NEXTHOP", "The gateway", "ADDRESS");
    const auto metric = AddOption(verb, "--metric", "Its metric, by default 0; one that is too low is raised", "N");
    RunChange(verb, output, [=] {
        const auto route = ParseRoute({destination(), nextHop(), metric()});
        return AddRoute(adapter(), route);
    });
}

} // namespace

void AddRouteCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, {"route", "Routes of an adapter", "route list lan0 --json"});
    AddListVerb(noun, output, {"list", "Show the routes of one adapter", "route list lan0"}, RouteFields(),
                "The adapter has no routes.",
                [](const Adapter& adapter) { return RecordsOf(Routes(adapter), RecordOf); });
    AddAdd(noun, output);
}

} // namespace zelkctl
