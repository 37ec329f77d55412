#pragma once

#include <cstdint>

#include <state/plan/step.h>

namespace zelk
{

/// Writes or removes an IPv4 route among the stored ones; one that is stored with another metric is replaced. Gives the
/// platform's code.
std::uint32_t ChangeStoredRoute(const StoredRoute& route);

} // namespace zelk
