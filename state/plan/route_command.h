#pragma once

#include <state/desired/desired_state.h>
#include <state/plan/step_list.h>

namespace zelk
{

enum class RouteVerb : std::uint8_t
{
    ADD,
    CHANGE, ///< its metric
    REMOVE
};

/// Plans what is done to a route in use: by netsh or, before Vista, by the route command, which keeps an IPv4 route
/// that is not to be active alone. A default route is a gateway.
void PlanRouteCommand(RouteVerb verb, const DesiredRoute& route, StepList& steps);

/// A default route that is in use only, because the gateways are stored elsewhere.
DesiredRoute DefaultRoute(const Gateway& gateway);

std::string TextOf(const DesiredRoute& route);

} // namespace zelk
