#pragma once

#include <state/machine/machine.h>

namespace zelk
{

/// What a reading leaves out; all of it is read by default.
struct ReadOptions
{
    bool identity = true; ///< the machine's names; the question for its domain goes to another process
    bool routes = true;   ///< routes and, where only they tell, metrics of gateways
};

/// Reads the machine by one pass over the platform: each table, each walk and each registry key of an adapter once, so
/// that time and platform calls grow with the number of adapters and routes. Nothing is cached between calls. It needs
/// no elevation, changes nothing, starts no command, writes no trace, and may run on several threads at once. It takes
/// tens of milliseconds.
///
/// What could not be read is absent and stands as a Problem in the machine or in the adapter that it concerns; the rest
/// is there. Adapters may come and go meanwhile: each is described as far as its parts could still be read.
///
/// @throws StateError when neither the address table nor the installed adapters could be read.
/// @throws std::bad_alloc when memory is out.
Machine ReadMachine(const ReadOptions& options = {});

} // namespace zelk
