#pragma once

#include <state/reading/reading.h>

namespace zelk
{

/// Completes the adapters of the address table by metric and MTU of each family (GetIpInterfaceTable). Where the system
/// has no such table they keep what the address table says.
void ReadInterfaceTables(Reading& reading);

} // namespace zelk
