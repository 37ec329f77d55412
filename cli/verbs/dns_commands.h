#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// The noun "dns" with its verbs.
void AddDnsCommands(Command tool);

} // namespace zelkctl
