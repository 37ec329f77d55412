#pragma once

#include <functional>
#include <string>

#include <state/pending/pending_store.h>

namespace zelk
{

/// How a watch has ended.
enum class WatchEnd : std::uint8_t
{
    GONE,        ///< nothing is pending any more: confirmed, or restored by another process
    CONFIRMED,   ///< the host that was waited for has answered
    RESTORED,    ///< the previous state is back, and the record says so
    NOT_RESTORED ///< it is not, and the record stays for a person to look at
};

/// What a watch does to the world.
struct WatchActions
{
    /// Takes the machine back. Gives what is not as before.
    std::function<std::vector<std::string>(const PendingChange&)> restore;
    /// Whether a host answers, after a second at most.
    std::function<bool(const IpAddress&)> answers;
};

/// The file that a watch keeps open as long as it lives.
std::wstring WatchFile(const std::wstring& folder, const std::string& id);

/// Watches over a pending change until it is confirmed, or restores the previous state: at once when whoever performed
/// it or restored it has died, and when the time for confirming is over. After a restart of the machine the time begins
/// anew. Blocks for as long as that takes.
/// @throws StateError when the change is watched already or the folder cannot be used.
WatchEnd WatchPendingChange(const std::wstring& folder, const std::string& id, const WatchActions& actions);

/// Milliseconds that are left for confirming a change; nothing while it does not wait.
std::optional<std::uint64_t> TimeLeft(const PendingChange& change);

} // namespace zelk
