#pragma once

#include "command_line.h"
#include "output.h"

namespace zelkctl
{

/// The noun "identity" with its verbs.
void AddIdentityCommands(CLI::App& app, Output& output);

} // namespace zelkctl
