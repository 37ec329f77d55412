#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// The noun "gateway" with its verbs.
void AddGatewayCommands(Command tool);

} // namespace zelkctl
