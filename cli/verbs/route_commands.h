#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// The noun "route" with its verbs.
void AddRouteCommands(Command tool);

} // namespace zelkctl
