#pragma once

#include <string>
#include <vector>

namespace zelkctl
{

/// The command line's arguments in UTF-8, without the program's name.
std::vector<std::string> Arguments();

} // namespace zelkctl
