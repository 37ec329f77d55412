#pragma once

#include <string>
#include <vector>

namespace zelkctl
{

/// The files that a path with "*" or "?" in its last part stands for, in the order of their names: no shell of this
/// system expands it for a program. A path without is given back as it is, whether there is such a file or not.
std::vector<std::wstring> FindFiles(const std::wstring& sPath);

} // namespace zelkctl
