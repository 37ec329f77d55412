#pragma once

#include <string_view>
#include <vector>

#include <zelk_nm/string.h>

namespace velmor
{

/// The texts of a list as the registry keeps it: each with a terminator, and one more behind the last. Empty texts
/// before the last one that is not empty are kept. Writers differ in how many terminators they put at the end, and so
/// any number is taken.
std::vector<string> SplitTexts(std::wstring_view list);

} // namespace velmor
