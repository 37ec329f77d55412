#pragma once

#include <string>

namespace zelkctl
{

/// Runs the tool once more with one argument and then those of this process, and returns what it writes to the standard
/// output. Throws Failure when it cannot be started.
std::string RunOnceMore(const std::wstring& sArgument);

} // namespace zelkctl
