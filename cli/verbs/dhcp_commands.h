#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// The noun "dhcp" with its verbs.
void AddDhcpCommands(Command tool);

} // namespace zelkctl
