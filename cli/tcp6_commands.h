#pragma once

#include "command_line.h"
#include "output.h"

namespace zelkctl
{

/// The noun "tcp6" with its verbs.
void AddTcp6Commands(CLI::App& app, Output& output);

} // namespace zelkctl
