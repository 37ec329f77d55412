#pragma once

#include "command_line.h"
#include "output.h"

namespace zelkctl
{

/// The noun "dhcp" with its verbs.
void AddDhcpCommands(CLI::App& app, Output& output);

} // namespace zelkctl
