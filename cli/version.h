#pragma once

#include <string>

namespace zelkctl
{

/// Version and description of the library. Throws OperationFailed.
std::string VersionText();

} // namespace zelkctl
