#pragma once

#include <string>
#include <vector>

namespace zelkctl
{

/// The arguments of the command line in UTF-8, without the program's name.
std::vector<std::string> ProgramArguments();

} // namespace zelkctl
