#pragma once

#include <set>

#include <state/reading/reading.h>

namespace zelk
{

/// Completes the adapters of the address table by metric and MTU of each family (GetIpInterfaceTable). Where the system
/// has no such table they keep what the address table says. Returns the families whose table could not be read: of them
/// neither MTU nor whether a metric is automatic is known.
std::set<Family> ReadInterfaceTables(Reading& reading);

} // namespace zelk
