#pragma once

#include <cstddef>

namespace testing_support
{

/// Number of kernel handles, registry keys included, that this process has open. The first call of all opens nothing
/// of its own that stays.
unsigned int CountHandles();

/// Number of blocks that are taken in all heaps of this process.
std::size_t CountHeapBlocks();

} // namespace testing_support
