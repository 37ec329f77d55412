#pragma once

#include <CLI/CLI.hpp>

#include "output.h"

namespace zelkctl
{

/// The noun "identity" with its verbs.
void AddIdentityCommands(CLI::App& app, Output& output);

} // namespace zelkctl
