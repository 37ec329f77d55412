#pragma once

#include <string>

namespace zelkctl
{

/// Of the library, such as "1.0.0.0". Throws OperationFailed.
std::string VersionNumber();

/// Version and description of the library. Throws OperationFailed.
std::string VersionText();

} // namespace zelkctl
