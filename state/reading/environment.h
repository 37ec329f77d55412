#pragma once

#include <state/reading/reading.h>

namespace zelk
{

/// Reads what runs: the system's version and product, whether it is a boot image, and what this process may do.
void ReadEnvironment(Reading& reading);

} // namespace zelk
