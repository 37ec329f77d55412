#pragma once

#include <string>
#include <vector>

namespace zelkctl
{

/// The arguments of wmain in UTF-8, without the program's name.
std::vector<std::string> ProgramArguments(int count, wchar_t** ppszArguments);

} // namespace zelkctl
