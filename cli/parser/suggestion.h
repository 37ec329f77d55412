#pragma once

#include <string>
#include <vector>

namespace zelkctl
{

/// The candidate that the user most likely meant; empty when none is similar.
std::string ClosestTo(const std::string& sWord, const std::vector<std::string>& candidates);

/// What is wrong with a word that has to be one of the values, which are of a kind such as "field"; empty when nothing
/// is.
std::string ObjectionTo(const std::string& sWord, const char* pszKind, const std::vector<std::string>& values);

/// "a, b and c"
std::string Enumeration(const std::vector<std::string>& words);

} // namespace zelkctl
