#pragma once

#include <optional>
#include <set>

#include <state/reading/reading.h>

namespace zelk
{

/// What is set for the whole machine and counts where an adapter has no setting of its own.
struct MachineSettings
{
    std::optional<bool> autoconfiguration; ///< absent where it could not be read
    std::set<Family> unreadInterfaces;     ///< families whose interface table could not be read
};

/// Completes an adapter by what the registry keeps for it: the name of its connection, what is configured of both
/// families, and its lease. Problems go to the adapter.
void ReadAdapterSettings(Adapter& adapter, const MachineSettings& machine, bool vista);

} // namespace zelk
