#pragma once

#include <vector>

#include <state/machine/machine.h>

#include "records/finding.h"

namespace zelkctl
{

/// What keeps the tool or the library from working on the machine, and what does not.
std::vector<Finding> Examine(const zelk::Machine& machine);

} // namespace zelkctl
