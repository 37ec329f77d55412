#pragma once

#include <string>
#include <vector>

namespace zelk
{

/// A command line from which CommandLineToArgvW and the C run time read the program's path and exactly these arguments.
/// The path holds no quotation mark.
std::wstring MakeCommandLine(const std::wstring& program, const std::vector<std::wstring>& arguments);

} // namespace zelk
