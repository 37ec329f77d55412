#pragma once

#include <state/reading/reading.h>

namespace zelk
{

/// Gives the adapters their active routes: GetIpForwardTable2 for each family, or before Vista GetIpForwardTable.
/// Default gateways follow from the routes.
void ReadRouteTables(Reading& reading);

/// Adds the persistent routes to those of the adapter whose network their next hop is on, or marks them where they are
/// active. To be called when the settings of the adapters have been read.
void ReadPersistentRoutes(Reading& reading);

} // namespace zelk
