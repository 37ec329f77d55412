#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// The noun "settings" with its verbs.
void AddSettingsCommands(CLI::App& app, Output& output);

} // namespace zelkctl
