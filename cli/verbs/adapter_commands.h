#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// The noun "adapter" with its verbs.
void AddAdapterCommands(CLI::App& app, Output& output);

/// What "adapter list" does, and the tool without arguments.
void ShowAdapterList(const Output& output);

} // namespace zelkctl
