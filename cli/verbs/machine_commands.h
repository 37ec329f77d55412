#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// "show", "version" and "schema", which are about the whole.
void AddMachineCommands(Command tool);

/// What "version" answers, and --version.
Answer VersionAnswer();

} // namespace zelkctl
