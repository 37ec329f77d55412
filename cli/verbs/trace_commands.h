#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// "trace show", "trace level" and "trace path". None of them may make a TOLVA: that empties the trace.
inline constexpr const char* TRACE_NOUN = "trace";
void AddTraceCommands(Command tool);

} // namespace zelkctl
