#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// The noun "gateway" with its verbs.
void AddGatewayCommands(CLI::App& app, Output& output);

} // namespace zelkctl
