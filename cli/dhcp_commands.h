#pragma once

#include <CLI/CLI.hpp>

#include "output.h"

namespace zelkctl
{

/// The noun "dhcp" with its verbs.
void AddDhcpCommands(CLI::App& app, Output& output);

} // namespace zelkctl
