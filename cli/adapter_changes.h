#pragma once

#include <CLI/CLI.hpp>

#include "output.h"

namespace zelkctl
{

/// The verbs of the noun "adapter" that change something.
void AddAdapterChanges(CLI::App& noun, Output& output);

} // namespace zelkctl
