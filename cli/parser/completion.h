#pragma once

#include <string>
#include <vector>

#include "parser/command_line.h"

namespace zelkctl
{

/// What the last word can become, of the command line without the tool's own name. Empty where nothing can be said.
std::vector<std::string> Complete(const CLI::App& app, const std::vector<std::string>& words);

} // namespace zelkctl
