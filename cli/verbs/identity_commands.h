#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// The noun "identity" with its verbs.
void AddIdentityCommands(CLI::App& app, Output& output);

} // namespace zelkctl
