#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// The noun "settings" with its verbs.
void AddSettingsCommands(Command tool);

} // namespace zelkctl
