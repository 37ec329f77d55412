#pragma once

#include <state/answers/library_version.h>

namespace zelkctl
{

/// Throws Failure where the library does not tell it.
zelk::LibraryVersion ReadLibraryVersion();

} // namespace zelkctl
