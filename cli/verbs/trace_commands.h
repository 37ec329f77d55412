#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// "trace show", "trace level" and "trace path". None of them may make a TOLVA: that empties the trace.
CLI::App& AddTraceCommands(CLI::App& app, Output& output);

} // namespace zelkctl
