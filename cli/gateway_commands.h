#pragma once

#include "command_line.h"
#include "output.h"

namespace zelkctl
{

/// The noun "gateway" with its verbs.
void AddGatewayCommands(CLI::App& app, Output& output);

} // namespace zelkctl
