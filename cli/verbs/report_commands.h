#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// The verb "report". It must not make a TOLVA: that empties the trace, which it shows.
inline constexpr const char* REPORT_VERB = "report";
void AddReportCommand(Command tool);

} // namespace zelkctl
