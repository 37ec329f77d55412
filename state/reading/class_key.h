#pragma once

#include <state/reading/reading.h>

namespace zelk
{

/// Completes the adapters by what the network class key tells of their drivers, and adds those that are installed and
/// not in the address table. False, with the problem in the machine, when the key cannot be read; a machine without it
/// has no installed adapter.
bool ReadClassKey(Reading& reading);

} // namespace zelk
