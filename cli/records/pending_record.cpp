#include "records/pending_record.h"

#include <state/pending/change_folder.h>
#include <state/pending/pending_store.h>
#include <state/pending/watch.h>

namespace zelkctl
{
namespace
{

std::string StatusOf(const zelk::PendingChange& change, bool bWatched, bool bAtWork)
{
    if (change.phase == zelk::PendingPhase::WAITING && bWatched)
        return "It is done and waits for \"zelkctl confirm\".";
    if (change.phase == zelk::PendingPhase::WAITING)
        return "It is done and waits to be confirmed, but nothing watches over it any more.";
    if (change.phase == zelk::PendingPhase::APPLYING)
        return bAtWork ? "It is being made." : "It was cut short; \"zelkctl restore\" takes the machine back.";
    return bAtWork ? "The state before it is being restored."
                   : "Restoring the state before it was not completed; \"zelkctl restore\" tries again.";
}

PendingShown ShownOf(const std::wstring& sFolder, const zelk::PendingRecord& record, bool bAtWork)
{
    PendingShown shown;
    shown.sId = record.id;
    if (!record.change)
    {
        shown.sStatus = "Its record cannot be used: " + record.fault + '.';
        return shown;
    }
    const zelk::PendingChange& change = *record.change;
    shown.bWatched = zelk::LifeSign::IsGiven(zelk::WatchFile(sFolder, record.id));
    shown.sStatus = StatusOf(change, shown.bWatched, bAtWork);
    shown.phase = zelk::WordOf(change.phase);
    shown.user = change.by.user;
    shown.process = change.by.process;
    shown.since = change.by.since;
    shown.confirmWithin = change.confirmWithin;
    if (const auto left = shown.bWatched ? zelk::TimeLeft(change) : std::nullopt)
        shown.secondsLeft = static_cast<std::uint32_t>((*left + 999) / 1000);
    shown.steps = change.steps;
    return shown;
}

} // namespace

std::vector<PendingShown> ReadPending()
{
    const std::wstring sFolder = zelk::ChangeFolder();
    std::vector<PendingShown> pending;
    const auto records = zelk::LoadPendingChanges(sFolder);
    const bool bAtWork = !records.empty() && zelk::ChangeLock::Holder(sFolder);
    for (const zelk::PendingRecord& record : records)
        pending.push_back(ShownOf(sFolder, record, bAtWork));
    return pending;
}

} // namespace zelkctl
