#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// "export" and "apply": the machine as a desired state, and a desired state made true.
void AddStateCommands(Command tool);

} // namespace zelkctl
