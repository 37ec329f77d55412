#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// The noun "dns" with its verbs.
void AddDnsCommands(CLI::App& app, Output& output);

} // namespace zelkctl
