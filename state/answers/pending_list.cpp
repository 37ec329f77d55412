#include <state/answers/pending_list.h>

#include <state/pending/change_folder.h>
#include <state/pending/pending_store.h>
#include <state/pending/watch.h>

namespace zelk
{
namespace
{

std::string StatusOf(const PendingChange& change, bool watched, bool atWork)
{
    if (change.phase == PendingPhase::RESTORED)
        return "The previous state was restored " + TextOf(*change.restoration) +
               "; \"zelkctl restore --discard\" removes this message.";
    if (change.phase == PendingPhase::WAITING && watched)
        return "It is done and waits for \"zelkctl confirm\".";
    if (change.phase == PendingPhase::WAITING)
        return "It is done and waits to be confirmed, but nothing watches over it any more.";
    if (change.phase == PendingPhase::APPLYING)
        return atWork ? "It is being made." : "It was interrupted; \"zelkctl restore\" takes the machine back.";
    if (atWork)
        return "The previous state is being restored.";
    std::string open;
    for (const std::string& item : change.restoration ? change.restoration->open : std::vector<std::string>())
        open += (open.empty() ? " Not restored: " : ", ") + item;
    if (!open.empty())
        open += '.';
    return "The previous state was not restored completely." + open +
           " \"zelkctl restore\" tries again; \"zelkctl restore --discard\" forgets the change.";
}

PendingEntry EntryOf(const std::wstring& folder, const PendingRecord& record, bool atWork)
{
    PendingEntry entry;
    entry.id = record.id;
    if (!record.change)
    {
        entry.status = "Its record cannot be used: " + record.fault + (record.fault.ends_with('.') ? "" : ".");
        return entry;
    }
    const PendingChange& change = *record.change;
    entry.watched = change.phase != PendingPhase::RESTORED && LifeSign::IsGiven(WatchFile(folder, record.id));
    entry.atWork = atWork && (change.phase == PendingPhase::APPLYING || change.phase == PendingPhase::RESTORING);
    entry.status = StatusOf(change, entry.watched, entry.atWork);
    if (change.restoration)
        entry.cause = WordOf(change.restoration->cause);
    entry.phase = WordOf(change.phase);
    if (!change.label.empty())
        entry.label = change.label;
    entry.user = change.by.user;
    entry.process = change.by.process;
    entry.since = change.by.since;
    entry.confirmWithin = change.confirmWithin;
    if (const auto left = entry.watched ? TimeLeft(change) : std::nullopt)
        entry.secondsLeft = static_cast<std::uint32_t>((*left + 999) / 1000);
    entry.steps = change.steps;
    return entry;
}

} // namespace

bool IsPending(const PendingEntry& entry)
{
    return entry.phase != WordOf(PendingPhase::RESTORED);
}

std::vector<PendingEntry> ReadPending()
{
    const std::wstring folder = ChangeFolder();
    std::vector<PendingEntry> pending;
    const auto records = LoadPendingChanges(folder);
    const bool atWork = !records.empty() && ChangeLock::Holder(folder);
    for (const PendingRecord& record : records)
        pending.push_back(EntryOf(folder, record, atWork));
    return pending;
}

} // namespace zelk
