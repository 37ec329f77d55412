#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// The noun "dhcp" with its verbs.
void AddDhcpCommands(CLI::App& app, Output& output);

} // namespace zelkctl
