#pragma once

#include <optional>
#include <string_view>

#include <state/machine/route.h>

namespace zelk
{

/// A route as the registry keeps it, IPv4 only: "DESTINATION,MASK,GATEWAY,METRIC". Nothing for any other text.
std::optional<Route> ParsePersistentRoute(std::string_view text);

} // namespace zelk
