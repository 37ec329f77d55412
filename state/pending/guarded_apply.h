#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <state/apply/apply.h>
#include <state/pending/pending_store.h>
#include <state/pending/watch.h>
#include <state/pending/watch_process.h>

namespace zelk
{

/// How a change is to be taken back unless somebody confirms it.
struct Confirmation
{
    std::uint32_t within = 0;         ///< seconds, from the end of the change
    std::optional<IpAddress> waitFor; ///< a host whose answer confirms
    WatchProgram program;
};

struct GuardedOptions
{
    ApplyOptions apply; ///< its timeout also limits the waiting for another change
    std::optional<Confirmation> confirmation;
    std::string label = {}; ///< of the pending change, for whoever looks at it
};

enum class GuardedOutcome : std::uint8_t
{
    APPLIED, ///< see `result` for how
    REFUSED, ///< see `faults`; nothing was changed
    BUSY,    ///< another process changes the machine, and did so until the time was over
    AWAITED  ///< another change waits to be confirmed, or is being restored
};

struct GuardedResult
{
    GuardedOutcome outcome = GuardedOutcome::APPLIED;
    std::vector<Fault> faults;
    std::optional<Changer> holder; ///< of BUSY, where it is known
    /// Of APPLIED, this change when it now waits to be confirmed or could not be undone; of AWAITED, the other one.
    std::optional<PendingChange> pending;
    Plan plan;
    ApplyResult result;
};

/// What is desired of a machine as it was just read. It may throw, which ends the change before it has begun.
using DesiredOf = std::function<DesiredState(const Machine&)>;

/// Plans a desired state and applies it, as the only process that changes the machine meanwhile. Before the first step
/// the previous state is on disk; it is removed when the change is done, or was undone, so that only a change that was
/// interrupted, or that has to be confirmed, stays pending. Records that only tell of an earlier restoring are removed.
/// Where no such folder can be written, as on a read-only boot medium, a change without a confirmation is made all the
/// same.
/// @throws StateError when the machine cannot be read, or a change that is to be confirmed cannot be watched over; then
///         nothing was changed.
GuardedResult ApplyGuarded(const DesiredOf& desired, const GuardedOptions& options);

/// What restoring or confirming found.
enum class PendingOutcome : std::uint8_t
{
    DONE,
    NOTHING,      ///< nothing is pending
    BUSY,         ///< another process is changing the machine
    INTERRUPTED,  ///< the change was interrupted; it can be restored, not confirmed
    NOT_RESTORED, ///< not everything is as before; it stays pending
    REFUSED       ///< no record can be used
};

struct PendingResult
{
    PendingOutcome outcome = PendingOutcome::DONE;
    std::optional<Changer> holder;
    /// Those that were dealt with, or that were refused; of NOTHING, those that tell of a change that was restored.
    std::vector<PendingRecord> records;
    std::vector<Undo> undone; ///< of each change that was restored
};

// Each of these looks at the change with the id alone, or at all of them where the id is empty.

/// Confirms the changes that wait for it.
PendingResult ConfirmPending(std::chrono::milliseconds timeout, const std::string& id = {});
/// Undoes pending changes, the last one first.
PendingResult RestorePending(const ApplyOptions& options, const std::string& id = {});
/// Removes the records of pending changes, whether they can be used or not, and restores nothing.
PendingResult DiscardPending(std::chrono::milliseconds timeout, const std::string& id = {});
/// What the process that watches over a change does; see RunWatchProcess. Throws nothing.
void WatchOver(const std::string& id, const ApplyOptions& options);

} // namespace zelk
