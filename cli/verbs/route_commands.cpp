#include "verbs/route_commands.h"

#include <algorithm>
#include <string>
#include <vector>

#include <state/desired/export.h>

#include "adapters/adapter.h"
#include "answer/failure.h"
#include "parser/ip_argument.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

/// A route as it is given on a command line.
struct GivenRoute
{
    zelk::IpPrefix destination;
    std::optional<zelk::IpAddress> nextHop; ///< absent only where any is meant
    std::optional<std::uint32_t> metric;
    bool bPersistent = false;
};

GivenRoute ParseRoute(const std::string& sDestination, const std::string& sNextHop)
{
    GivenRoute route;
    route.destination = ParseNetwork("DESTINATION", sDestination);
    if (sNextHop.empty())
        return route;
    route.nextHop = ParseAddress("NEXTHOP", sNextHop);
    if (route.nextHop->GetFamily() != route.destination.address.GetFamily())
        throw UsageError("NEXTHOP", "destination and next hop must be of the same family, IPv4 or IPv6");
    return route;
}

enum class Edit
{
    ADD,   ///< beside the others; one that is there gets the metric and the store
    SET,   ///< the only one to its destination
    REMOVE ///< it, or all to the destination
};

/// Default routes are an adapter's gateways.
struct GatewayList
{
    using Element = zelk::Gateway;

    static bool IsTo(const Element&, const GivenRoute&) { return true; }
    static const zelk::IpAddress& NextHop(const Element& gateway) { return gateway.address; }
    static Element New(const GivenRoute& given) { return {*given.nextHop, given.metric}; }
    static void Change(Element& gateway, const GivenRoute& given)
    {
        if (given.metric)
            gateway.metric = given.metric;
    }
};

struct RouteList
{
    using Element = zelk::DesiredRoute;

    static bool IsTo(const Element& route, const GivenRoute& given) { return route.destination == given.destination; }
    static const zelk::IpAddress& NextHop(const Element& route) { return route.nextHop; }
    static Element New(const GivenRoute& given)
    {
        return {given.destination, *given.nextHop, given.metric,
                given.bPersistent ? zelk::RouteStore::PERSISTENT : zelk::RouteStore::ACTIVE};
    }
    static void Change(Element& route, const GivenRoute& given)
    {
        if (given.metric)
            route.metric = given.metric;
        if (given.bPersistent)
            route.store = zelk::RouteStore::PERSISTENT;
    }
};

template <class List>
void Apply(Edit edit, const GivenRoute& given, std::vector<typename List::Element>& list)
{
    const auto IsMeant = [&](const auto& element) {
        return List::IsTo(element, given) && (!given.nextHop || List::NextHop(element) == *given.nextHop);
    };
    if (edit == Edit::REMOVE)
    {
        std::erase_if(list, IsMeant);
        return;
    }
    if (edit == Edit::SET)
        std::erase_if(list, [&](const auto& element) { return List::IsTo(element, given) && !IsMeant(element); });
    const auto found = std::ranges::find_if(list, IsMeant);
    if (found == list.end())
        list.push_back(List::New(given));
    else
        List::Change(*found, given);
}

/// The adapter's routes, or gateways, with the change in them.
zelk::DesiredAdapter DesiredOf(const zelk::Adapter& adapter, Edit edit, const GivenRoute& given)
{
    const zelk::DesiredAdapter present = zelk::ConfigurationOf(adapter);
    const zelk::Family family = given.destination.address.GetFamily();
    zelk::DesiredAdapter desired;
    desired.Of(family).gateways = present.Of(family).gateways;
    desired.routes = present.routes;
    const bool bDefault = given.destination.length == 0;
    if (bDefault ? !desired.Of(family).gateways : !desired.routes)
        throw Failure({.code = EXIT_NOT_POSSIBLE,
                       .sReason = "the routes of the adapter are not known; nothing was changed",
                       .sAdapter = zelk::NameOf(adapter),
                       .sHint = "\"zelkctl adapter show\" says why."});
    if (bDefault)
    {
        Apply<GatewayList>(edit, given, *desired.Of(family).gateways);
        desired.routes.reset();
    }
    else
    {
        Apply<RouteList>(edit, given, *desired.routes);
        desired.Of(family).gateways.reset();
    }
    return desired;
}

StateChange ChangeRoutes(const zelk::Adapter& adapter, Edit edit, const GivenRoute& given)
{
    const std::string sRoute = "the route to " + given.destination.ToText() +
                               (given.nextHop ? " via " + given.nextHop->ToText() : std::string());
    StateChange change =
        ChangeOf(adapter, DesiredOf(adapter, edit, given),
                 "Adapter " + Quoted(adapter) + (edit == Edit::REMOVE ? " no longer has " : " has ") + sRoute + '.');
    change.bCanDisconnect = edit != Edit::ADD || given.destination.length == 0;
    return change;
}

const ParameterHelp DESTINATION = {"DESTINATION", "The destination network; 0.0.0.0/0 or ::/0 for a default route",
                                   "ADDRESS/PREFIX"};

void AddAddOrSet(Command noun, const CommandHelp& help, Edit edit)
{
    Command verb = noun.AddVerb(help);
    const auto adapter = AddAdapterIn(verb);
    const auto destination = verb.AddArgument(DESTINATION);
    const auto nextHop = verb.AddArgument({"NEXTHOP", "Address of the gateway; 0.0.0.0 or :: for none", "ADDRESS"});
    const auto metric = AddMetricOption(verb);
    const auto persistent = verb.AddFlag("--persistent", "Keep the route after the next start of the system");
    verb.AddRemark("A route that exists keeps its metric and its store unless others are given. Default routes are "
                   "always persistent.");
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        GivenRoute route = ParseRoute(destination(), nextHop());
        route.metric = metric();
        route.bPersistent = persistent();
        return ChangeRoutes(adapter(machine), edit, route);
    });
}

void AddRemove(Command noun)
{
    Command verb = noun.AddVerb({"remove", "Remove a route from one adapter", "route remove lan0 10.0.0.0/8 --check"});
    const auto adapter = AddAdapterIn(verb);
    const auto destination = verb.AddArgument(DESTINATION);
    const auto nextHop = verb.AddOptionalArgument(
        {"NEXTHOP", "Address of the gateway; without it all static routes to the destination are meant", "ADDRESS"});
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        const GivenRoute route = ParseRoute(destination(), nextHop());
        return ChangeRoutes(adapter(machine), Edit::REMOVE, route);
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
    AddAddOrSet(noun, {"add", "Add a route to one adapter", "route add lan0 10.0.0.0/8 192.168.1.1 --check"},
                Edit::ADD);
    AddAddOrSet(noun,
                {"set", "Make a route the only one of an adapter to its destination",
                 "route set lan0 10.0.0.0/8 192.168.1.2 --persistent --yes"},
                Edit::SET);
    AddRemove(noun);
}

} // namespace zelkctl
