#pragma once

#include <CLI/CLI.hpp>

namespace zelkctl
{

/// The verbs of the noun "adapter" that change something.
void AddAdapterChanges(CLI::App& noun);

} // namespace zelkctl
