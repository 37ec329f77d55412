#pragma once

#include "command_line.h"
#include "output.h"

namespace zelkctl
{

/// The noun "address" with its verbs.
void AddAddressCommands(CLI::App& app, Output& output);

} // namespace zelkctl
