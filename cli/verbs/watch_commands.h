#pragma once

#include "parser/command.h"

namespace zelkctl
{

void AddWatchCommand(Command tool);

} // namespace zelkctl
