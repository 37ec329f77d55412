#pragma once

#include <string>
#include <vector>

#include <state/desired/desired_state.h>
#include <state/machine/machine.h>

namespace zelk
{

/// A machine as a desired state, and what could not be put into it.
struct Export
{
    DesiredState state;
    std::vector<std::string> leftOut; ///< a sentence each
};

/// Writes down how the adapters are set. Applied to the same machine it changes nothing: a part that is in use
/// otherwise than it is configured, that is not known, or that no desired state may hold is left out.
/// @param adapters  those of the machine to be exported
/// @param identity  whether the names of the machine are exported as well
Export ExportState(const Machine& machine, const std::vector<const Adapter*>& adapters, bool identity);

/// All adapters that a person knows: those that are not hidden and have a GUID.
std::vector<const Adapter*> ExportedAdapters(const Machine& machine);

/// How one adapter is configured, whether or not that is in use: what a change of it can be taken back to.
DesiredAdapter ConfigurationOf(const Adapter& adapter);

} // namespace zelk
