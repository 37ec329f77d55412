#pragma once

#include <state/machine/machine.h>
#include <state/reading/read_machine.h>

namespace zelk
{

/// ReadMachine on a thread of its own, for callers that read again and again: some systems keep what they have read of
/// the resolver's settings for each thread. Blocks until that thread has ended.
///
/// @throws StateError as ReadMachine does, and when the thread cannot be started or waited for.
/// @throws std::bad_alloc when memory is out.
Machine ReadAnew(const ReadOptions& options = {});

} // namespace zelk
