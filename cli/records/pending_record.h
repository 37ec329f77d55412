#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <state/fields/field.h>

namespace zelkctl
{

/// A change that can still be taken back, or a record of one that cannot be used.
struct PendingShown
{
    std::string sId;
    std::string sStatus; ///< a sentence
    std::optional<std::string> phase;
    std::optional<std::string> user;
    std::optional<std::uint32_t> process;
    std::optional<std::string> since;
    std::optional<std::uint32_t> confirmWithin;
    std::optional<std::uint32_t> secondsLeft;
    bool bWatched = false;
    std::vector<std::string> steps;
};

/// All that is pending on this machine and may be read by this process.
std::vector<PendingShown> ReadPending();

} // namespace zelkctl

namespace zelk
{

template <>
FieldTable<zelkctl::PendingShown> FieldsOf();

} // namespace zelk
