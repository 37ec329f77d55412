#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// The noun "address" with its verbs.
void AddAddressCommands(CLI::App& app, Output& output);

} // namespace zelkctl
