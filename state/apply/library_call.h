#pragma once

#include <state/machine/adapter.h>
#include <state/plan/step.h>

namespace zelk
{

/// Calls the operation of TOLVA. The adapter is null for the machine's own operations.
bool Call(const LibraryCall& call, const Adapter* adapter);

} // namespace zelk
