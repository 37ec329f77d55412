#pragma once

#include <string>

namespace zelkctl
{

/// Of the library, such as "1.0.0.0", and what it says of itself. They throw Failure.
std::string LibraryVersion();
std::string LibraryDescription();

} // namespace zelkctl
