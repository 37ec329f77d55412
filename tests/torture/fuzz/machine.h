#pragma once

#include <state/machine/machine.h>

namespace fuzz
{

/// A machine with two adapters, lan0 and lan1, of which the first one is configured.
const zelk::Machine& SmallMachine();

} // namespace fuzz
