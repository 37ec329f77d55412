#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// The noun "route" with its verbs.
void AddRouteCommands(CLI::App& app, Output& output);

} // namespace zelkctl
