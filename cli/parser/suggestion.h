#pragma once

#include <string>
#include <vector>

namespace zelkctl
{

/// The candidate that the user most likely meant; empty when none is similar.
std::string ClosestTo(const std::string& sWord, const std::vector<std::string>& candidates);

/// "a, b and c"
std::string Enumeration(const std::vector<std::string>& words);

} // namespace zelkctl
