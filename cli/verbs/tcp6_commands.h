#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// The noun "tcp6" with its verbs.
void AddTcp6Commands(Command tool);

} // namespace zelkctl
