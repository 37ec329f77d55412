#pragma once

#include "command_line.h"
#include "output.h"

namespace zelkctl
{

/// The verbs of the noun "adapter" that change something.
void AddAdapterChanges(CLI::App& noun, Output& output);

} // namespace zelkctl
