#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// The noun "tcp6" with its verbs.
void AddTcp6Commands(CLI::App& app, Output& output);

} // namespace zelkctl
