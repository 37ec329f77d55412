#pragma once

#include "command_line.h"
#include "output.h"

namespace zelkctl
{

/// The noun "dns" with its verbs.
void AddDnsCommands(CLI::App& app, Output& output);

} // namespace zelkctl
