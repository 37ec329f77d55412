#pragma once

#include <cstddef>

#include "../paired.h"

/// "zelkctl adapter list" as a whole process beside one that makes the same platform calls and prints nothing.
Comparison AdapterListProcess(std::size_t count);

/// "zelkctl apply" of what is there already, beside "zelkctl show".
Comparison ApplyNothingProcess(std::size_t count);
