#pragma once

#include "command_line.h"
#include "output.h"

namespace zelkctl
{

/// The noun "settings" with its verbs.
void AddSettingsCommands(CLI::App& app, Output& output);

} // namespace zelkctl
