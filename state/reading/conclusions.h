#pragma once

#include <state/reading/devices.h>
#include <state/reading/reading.h>

namespace zelk
{

/// Joins the adapters with their devices, and adds devices that have no driver yet. What is in the address table was
/// read from it: `tableRead` says whether one that is not there can be said not to run.
void AddDevices(Reading& reading, const Devices& devices, bool tableRead);

} // namespace zelk
