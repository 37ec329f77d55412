#include "change/other_changes.h"

#include <state/answers/reports.h>

namespace zelkctl
{

Failure BusyFailure(const std::optional<zelk::Changer>& holder)
{
    return Failure(zelk::ReportOfBusy(holder), "--timeout says how long to wait for that.");
}

Failure AwaitedFailure(const zelk::PendingChange& other)
{
    return Failure(zelk::ReportOfAwaited(other), "\"zelkctl confirm\" keeps it, \"zelkctl restore\" takes it back.");
}

} // namespace zelkctl
