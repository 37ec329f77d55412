#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// The verbs of the noun "adapter" that change something.
void AddAdapterChanges(Command noun);

} // namespace zelkctl
