#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <state/apply/stored_form.h>
#include <state/desired/desired_state.h>
#include <state/desired/fault.h>
#include <state/fields/json.h>
#include <state/machine/machine.h>
#include <state/pending/change_lock.h>
#include <state/plan/plan.h>

namespace zelk
{

enum class PendingPhase : std::uint8_t
{
    APPLYING,  ///< its steps are being performed, unless whoever performed them has died
    WAITING,   ///< it is done and waits to be confirmed
    RESTORING, ///< the previous state is being restored, unless whoever restored it has died
    RESTORED   ///< it was restored while nobody looked, and the record only tells so
};

/// Why the previous state was restored.
enum class RestoreCause : std::uint8_t
{
    NOT_CONFIRMED, ///< in time
    INTERRUPTED,   ///< whoever made the change has died
    REQUESTED
};

struct Restoration
{
    RestoreCause cause = RestoreCause::INTERRUPTED;
    std::string at;                ///< UTC, its end or last attempt
    std::vector<std::string> open; ///< what is not as before, such as "lan0: ipv4.addresses"
};

/// A change that can still be taken back. It is kept on disk, so it holds all that restoring needs.
struct PendingChange
{
    std::string id;      ///< see NewChangeId
    std::string machine; ///< see MachineId
    PendingPhase phase = PendingPhase::APPLYING;
    Changer by;
    std::string label;              ///< a note by whoever made it; may be empty
    std::vector<std::string> steps; ///< what it does, a sentence each
    /// What was configured before of all that the steps can touch. Adapters are named by "guid:".
    DesiredState before;
    std::vector<StoredValue> stored; ///< the same, to the letter
    /// What of it was not known, such as "lan0: ipv4.addresses"; nothing can restore that.
    std::vector<std::string> unknown;
    std::optional<std::uint32_t> confirmWithin; ///< seconds, from the end of the change
    std::optional<IpAddress> waitFor;           ///< confirms by its answer
    /// Milliseconds of the clock that counts from the start of the machine and cannot be set.
    std::optional<std::uint64_t> waitingSince;
    std::optional<Restoration> restoration; ///< once it has begun
};

/// A plan that is about to be performed on a machine.
PendingChange MakePendingChange(const Machine& before, const Plan& plan);

/// Where restoring leads. An adapter that the machine no longer has stays a target, so that its absence shows.
std::vector<Target> TargetsOf(const PendingChange& change, const Machine& machine = {});

/// From now on the previous state is being restored. A cause that is known already stays.
void BeginRestoring(PendingChange& change, RestoreCause cause);

/// The JSON text of a change, and what such a text says. Every fault is appended; with one the result is not to be
/// used.
std::string WritePendingChange(const PendingChange& change);
PendingChange ParsePendingChange(std::string_view text, std::vector<Fault>& faults);

/// Sixteen lower-case hexadecimal digits that no other change has.
std::string NewChangeId();
bool IsChangeId(std::string_view text) noexcept;
// For ObjectReader.
std::optional<std::string> ReadChangeId(const Json& json, const std::string& place, std::vector<Fault>& faults);
std::optional<Changer> ReadChanger(const Json& json, const std::string& place, std::vector<Fault>& faults);

/// Milliseconds since the start of the machine.
std::uint64_t ClockNow();

const char* WordOf(PendingPhase phase) noexcept;
/// "notConfirmed", "interrupted" or "requested".
const char* WordOf(RestoreCause cause) noexcept;

/// When and why the previous state was restored, as in "at 2026-01-31T23:59:59Z, because nobody confirmed the change".
std::string TextOf(const Restoration& restoration);

} // namespace zelk
