#include "route_commands.h"

#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

#include "adapter.h"
#include "command.h"
#include "ip_argument.h"
#include "json_value.h"
#include "library_call.h"
#include "number.h"
#include "route_record.h"
#include "text.h"

namespace zelkctl
{
namespace
{

/// The user's words for a new route.
struct RouteArguments
{
    std::string sAdapter;
    std::string sDestination;
    std::string sNextHop;
    std::string sMetric;
};

void ListRoutes(const Output& output, const Adapter& adapter)
{
    std::vector<TOLVA::ROUTE_INFO> routes;
    Call("GetAdapterRoutes", [&] { return TOLVA::GetAdapterRoutes(adapter.info, routes); });
    output.List(RouteFields(), RecordsOf(routes, RecordOf), "The adapter has no routes.");
}

unsigned long ParseMetric(const std::string& sText)
{
    const auto ulMetric = ParseNumber(sText);
    if (!ulMetric)
        throw CLI::ValidationError("--metric", Quoted(sText) + " is not 0 to 4294967295");
    return *ulMetric;
}

/// All but the index, which only the adapter can tell.
TOLVA::ROUTE_INFO ParseRoute(const RouteArguments& arguments)
{
    const Network destination = ParseNetwork("DESTINATION", arguments.sDestination);
    TOLVA::ROUTE_INFO route;
    route.Destination = destination.address;
    route.PrefixLength = destination.prefixLength;
    route.NextHop = ParseAddress("NEXTHOP", arguments.sNextHop);
    if (route.NextHop.family() != route.Destination.family())
        throw CLI::ValidationError("NEXTHOP", "destination and next hop are not of one family, IPv4 or IPv6");
    route.ulMetric = ParseMetric(arguments.sMetric);
    return route;
}

std::string Describe(const TOLVA::ROUTE_INFO& route)
{
    const Json record = RecordOf(route);
    return record["destination"].get<std::string>() + " via " + record["nextHop"].get<std::string>();
}

void AddRoute(const RouteArguments& arguments)
{
    TOLVA::ROUTE_INFO route = ParseRoute(arguments);
    const Adapter adapter = FindAdapter(arguments.sAdapter);
    Call("GetAdapterIndex", [&] { return TOLVA::GetAdapterIndex(adapter.info, route.ulIndex); });
    Call("AddAdapterRoute", [&] { return TOLVA::AddAdapterRoute(adapter.info, route); });
    Output::Note("Adapter " + Quoted(adapter) + " has the route " + Describe(route) + '.');
}

void AddList(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, "list", "Show the routes of one adapter", "route list lan0");
    AddJsonFlag(verb, output);
    RunForAdapter(verb, [&output](const Adapter& adapter) { ListRoutes(output, adapter); });
}

void AddAdd(CLI::App& noun)
{
    CLI::App& verb = AddVerb(noun, "add", "Add a route to one adapter", "route add lan0 10.0.0.0/8 192.168.1.1");
    const CLI::Option& adapter = AddAdapterArgument(verb);
    const CLI::Option& destination =
        AddArgument(verb, "DESTINATION", "Where it leads, 0.0.0.0/0 or ::/0 for everywhere", "ADDRESS/PREFIX");
    const CLI::Option& nextHop = AddArgument(verb, "NEXTHOP", "The gateway", "ADDRESS");
    const CLI::Option& metric = *verb.add_option("--metric", "Its metric, by default 0; one that is too low is raised")
                                     ->option_text("N")
                                     ->default_str("0");
    verb.callback([&] {
        AddRoute({adapter.as<std::string>(), destination.as<std::string>(), nextHop.as<std::string>(),
                  metric.as<std::string>()});
    });
}

} // namespace

void AddRouteCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, "route", "Routes of an adapter", "route list lan0 --json");
    AddList(noun, output);
    AddAdd(noun);
}

} // namespace zelkctl
