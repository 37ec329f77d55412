#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// The noun "identity" with its verbs.
void AddIdentityCommands(Command tool);

} // namespace zelkctl
