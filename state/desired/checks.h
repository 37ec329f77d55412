#pragma once

#include <vector>

#include <state/desired/desired_state.h>
#include <state/desired/fault.h>
#include <state/machine/machine.h>

namespace zelk
{

/// The adapters of the machine that a desired state names, one for each of its adapters in their order; null where it
/// names none or several, which is a fault.
std::vector<const Adapter*> ResolveAdapters(const Machine& machine, const DesiredState& state,
                                            std::vector<Fault>& faults);

/// Checks all that can be known before anything is changed: addresses that a host can bear, networks, gateways and next
/// hops on the link, ranges of numbers, names, duplicates within the state and with the rest of the machine. `adapters`
/// is what ResolveAdapters gave.
void CheckDesiredState(const Machine& machine, const std::vector<const Adapter*>& adapters, const DesiredState& state,
                       std::vector<Fault>& faults);

} // namespace zelk
