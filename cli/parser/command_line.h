#pragma once

#include <string>
#include <vector>

#include "parser/request.h"

namespace CLI
{
class App;
}

namespace zelkctl
{

/// Reads a command line, which completes the request that the parser's commands write to. Help is an answer like any
/// other. Throws Failure for a command line that does not make sense.
void ReadCommandLine(CLI::App& parser, std::vector<std::string> arguments, Request& request);

} // namespace zelkctl
