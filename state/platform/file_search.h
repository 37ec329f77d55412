#pragma once

#include <string>
#include <vector>

namespace zelk
{

struct FoundFile
{
    std::wstring name; ///< without its folder
    bool isFolder = false;
};

/// What lies in a folder and fits a pattern such as "*.json", in no certain order; nothing when the folder cannot be
/// read. All of it is known before the first is looked at, so files can be removed meanwhile.
/// @param pattern  a path with "*" or "?" in its last part
std::vector<FoundFile> FindFiles(const std::wstring& pattern);

} // namespace zelk
