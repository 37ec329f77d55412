#pragma once

#include "command_line.h"
#include "output.h"

namespace zelkctl
{

/// The noun "route" with its verbs.
void AddRouteCommands(CLI::App& app, Output& output);

} // namespace zelkctl
