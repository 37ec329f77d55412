#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <state/fields/field.h>

namespace zelk
{

/// A change that can still be taken back or was restored without anybody looking, or a record that cannot be used.
struct PendingEntry
{
    std::string id;
    std::string status; ///< a sentence
    std::optional<std::string> phase;
    std::optional<std::string> label;
    std::optional<std::string> user;
    std::optional<std::uint32_t> process;
    std::optional<std::string> since;
    std::optional<std::uint32_t> confirmWithin;
    std::optional<std::uint32_t> secondsLeft;
    bool watched = false;
    bool atWork = false;              ///< it is being made or taken back at this moment
    std::optional<std::string> cause; ///< why it was or is being taken back
    std::vector<std::string> steps;
};

/// Whether something is still to be done about it: it does not only tell of a change that was restored.
bool IsPending(const PendingEntry& entry);

/// All that is pending on this machine and may be read by this process.
std::vector<PendingEntry> ReadPending();

template <>
FieldTable<PendingEntry> FieldsOf();

} // namespace zelk
