#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// The verbs of the noun "adapter" that change something.
void AddAdapterChanges(CLI::App& noun, Output& output);

} // namespace zelkctl
