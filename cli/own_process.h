#pragma once

#include <string>

namespace zelkctl
{

/// Runs the tool once more with the arguments of this process and one more, and returns what it writes to the standard
/// output. Throws Failure when it cannot be started.
std::string RunOnceMore(const std::wstring& sArgument);

} // namespace zelkctl
