#include "change/other_changes.h"

#include <state/pending/watch.h>

namespace zelkctl
{
namespace
{

std::string NameOf(const zelk::Changer& changer)
{
    return changer.user + " (process " + std::to_string(changer.process) + ", since " + changer.since + ')';
}

} // namespace

Failure BusyFailure(const std::optional<zelk::Changer>& holder)
{
    return Failure({.code = EXIT_BUSY,
                    .sReason = (holder ? NameOf(*holder) : std::string("another process")) +
                               " is changing the machine; nothing was changed",
                    .sHint = "--timeout says how long to wait for that."});
}

Failure AwaitedFailure(const zelk::PendingChange& other)
{
    const auto left = zelk::TimeLeft(other);
    return Failure({.code = EXIT_BUSY,
                    .sReason = "a change by " + NameOf(other.by) +
                               (left ? " waits to be confirmed for " + std::to_string((*left + 999) / 1000) + " s more"
                                     : " is being completed or restored") +
                               "; nothing was changed",
                    .sHint = "\"zelkctl confirm\" keeps it, \"zelkctl restore\" takes it back."});
}

} // namespace zelkctl
