#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// The noun "address" with its verbs.
void AddAddressCommands(Command tool);

} // namespace zelkctl
