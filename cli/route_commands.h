#pragma once

#include <CLI/CLI.hpp>

#include "output.h"

namespace zelkctl
{

/// The noun "route" with its verbs.
void AddRouteCommands(CLI::App& app, Output& output);

} // namespace zelkctl
