#include <state/pending/guarded_apply.h>

#include <algorithm>

#include <state/apply/take_back.h>
#include <state/pending/answers.h>
#include <state/pending/change_folder.h>
#include <state/plan/restore.h>
#include <state/reading/read_machine.h>

namespace zelk
{
namespace
{

using std::chrono::milliseconds;

/// Nothing where it cannot be used and nobody needs it.
std::optional<std::wstring> PreparedFolder(bool isNeeded)
try
{
    std::wstring folder = ChangeFolder();
    PrepareChangeFolder(folder);
    return folder;
}
catch (const StateError&)
{
    if (isNeeded)
        throw;
    return std::nullopt;
}

bool IsOver(const PendingRecord& record)
{
    return record.change && record.change->phase == PendingPhase::RESTORED;
}

/// What restorings have left to tell. Whoever changes the machine next has been told.
void RemoveReports(const std::wstring& folder)
{
    for (const PendingRecord& record : LoadPendingChanges(folder))
        if (IsOver(record))
            RemovePendingChange(folder, record.id);
}

std::vector<std::string> OpenOf(const Undo& undo)
{
    std::vector<std::string> open;
    for (const auto& item : undo.open)
        open.push_back(item.adapter.empty() ? item.path : item.adapter + ": " + item.path);
    return open;
}

/// A change that somebody watches over. One that nobody does keeps no other from being made.
std::optional<PendingChange> FindWatched(const std::wstring& folder)
{
    for (PendingRecord& record : LoadPendingChanges(folder))
        if (record.change && LifeSign::IsGiven(WatchFile(folder, record.id)))
            return std::move(record.change);
    return std::nullopt;
}

/// The record of one change, from before its first step until it is over.
class ChangeRecord
{
public:
    ChangeRecord(const std::wstring& folder, PendingChange change, const std::optional<Confirmation>& confirmation)
        : m_folder(folder), m_change(std::move(change)), m_confirmation(confirmation)
    {
        if (m_confirmation)
        {
            m_change.confirmWithin = m_confirmation->within;
            m_change.waitFor = m_confirmation->waitFor;
        }
        StorePendingChange(m_folder, m_change);
        if (m_confirmation)
            StartFirstWatch();
    }

    /// What stays pending of it.
    std::optional<PendingChange> Finish(const ApplyResult& result)
    {
        const bool done = result.outcome == Outcome::CHANGED || result.outcome == Outcome::NOT_VERIFIED;
        const bool halfway = !done && result.undo && !result.undo->open.empty();
        if (halfway)
            m_change.phase = PendingPhase::RESTORING;
        if (done && m_change.confirmWithin)
        {
            m_change.phase = PendingPhase::WAITING;
            m_change.waitingSince = ClockNow();
        }
        if (m_change.phase == PendingPhase::APPLYING)
        {
            RemovePendingChange(m_folder, m_change.id);
            return std::nullopt;
        }
        StorePendingChange(m_folder, m_change);
        if (m_confirmation && !LifeSign::IsGiven(WatchFile(m_folder, m_change.id)))
            StartWatchAgain();
        return m_change;
    }

private:
    void StartWatch() const
    {
        constexpr milliseconds TIMEOUT(30000);
        StartWatchProcess(m_folder, m_change.id, m_confirmation->program, TIMEOUT);
    }

    /// When it was ended from outside meanwhile.
    void StartWatchAgain() const
    try
    {
        StartWatch();
    }
    catch (const StateError& error)
    {
        Problem problem = error.GetProblem();
        problem.text = "The change was made and can be restored, but nothing watches over it";
        throw StateError(problem);
    }

    void StartFirstWatch() const
    {
        try
        {
            StartWatch();
        }
        catch (...)
        {
            RemovePendingChange(m_folder, m_change.id);
            throw;
        }
    }

    const std::wstring& m_folder;
    PendingChange m_change;
    const std::optional<Confirmation>& m_confirmation;
};

/// Whoever promises to take a change back has to know what was there before.
void RefuseUnknown(const Machine& before, const Plan& plan, std::vector<Fault>& faults)
{
    for (const Difference& unknown : UnknownBefore(before, plan.steps))
        faults.push_back({FaultKind::SYSTEM, "",
                          unknown.adapter + ": the change could not be undone, because the configured " + unknown.path +
                              " cannot be read"});
}

/// Under the lock, where there is one.
void PlanAndApply(const std::optional<std::wstring>& folder, const DesiredOf& desired, const GuardedOptions& options,
                  GuardedResult& result)
{
    const Machine before = ReadMachine();
    result.plan = MakePlan(before, desired(before), result.faults);
    if (options.confirmation)
        RefuseUnknown(before, result.plan, result.faults);
    if (!result.faults.empty())
    {
        result.outcome = GuardedOutcome::REFUSED;
        return;
    }
    std::optional<ChangeRecord> record;
    if (folder && !result.plan.steps.empty())
    {
        PendingChange change = MakePendingChange(before, result.plan);
        change.label = options.label;
        record.emplace(*folder, std::move(change), options.confirmation);
    }
    result.result = Apply(before, result.plan, options.apply);
    if (record)
        result.pending = record->Finish(result.result);
}

/// The lock, or who has it.
std::optional<ChangeLock> TakeLock(const std::wstring& folder, milliseconds timeout,
                                   const std::function<bool()>& isCancelled, std::optional<Changer>& holder)
{
    auto lock = ChangeLock::Take(folder, timeout, isCancelled);
    if (!lock)
        holder = ChangeLock::Holder(folder);
    return lock;
}

/// All, or the one with the id.
std::vector<PendingRecord> RecordsOf(const std::wstring& folder, const std::string& id)
{
    auto records = LoadPendingChanges(folder);
    std::erase_if(records, [&](const PendingRecord& record) { return !id.empty() && record.id != id; });
    return records;
}

/// The last one first.
std::vector<PendingRecord> InOrder(std::vector<PendingRecord> records)
{
    std::ranges::stable_sort(records, std::ranges::greater(), [](const PendingRecord& record) {
        return record.change ? record.change->by.since : std::string();
    });
    return records;
}

Undo Restore(const PendingChange& change, const ApplyOptions& options)
{
    Undo undo = TakeBack(TargetsOf(change, ReadMachine()), change.before.identity, StoredForm(change.stored), options);
    for (const std::string& unknown : change.unknown)
        undo.open.push_back({"", unknown, Json(), Json()});
    return undo;
}

bool ConfirmAll(const std::wstring& folder, std::vector<PendingRecord> records, PendingResult& result)
{
    bool interrupted = false;
    for (PendingRecord& record : records)
    {
        const bool waits = record.change && record.change->phase == PendingPhase::WAITING;
        interrupted = interrupted || (record.change && !waits && !IsOver(record));
        if (!waits)
            continue;
        RemovePendingChange(folder, record.id);
        result.records.push_back(std::move(record));
    }
    return interrupted;
}

/// False when not everything is as before; the record says what.
bool RestoreOne(const std::wstring& folder, PendingChange& change, const ApplyOptions& options, PendingResult& result)
{
    BeginRestoring(change, RestoreCause::REQUESTED);
    StorePendingChange(folder, change);
    const Undo& undo = result.undone.emplace_back(Restore(change, options));
    if (undo.open.empty())
        RemovePendingChange(folder, change.id);
    else
    {
        change.restoration->open = OpenOf(undo);
        StorePendingChange(folder, change);
    }
    return undo.open.empty();
}

void RestoreAll(const std::wstring& folder, std::vector<PendingRecord> records, const ApplyOptions& options,
                PendingResult& result)
{
    bool isDone = true;
    for (PendingRecord& record : records)
    {
        if (IsOver(record))
            continue;
        isDone = record.change && RestoreOne(folder, *record.change, options, result) && isDone;
        result.records.push_back(std::move(record));
    }
    if (result.records.empty())
        result.outcome = PendingOutcome::NOTHING;
    else if (result.undone.empty())
        result.outcome = PendingOutcome::REFUSED;
    else
        result.outcome = isDone ? PendingOutcome::DONE : PendingOutcome::NOT_RESTORED;
}

/// Does something with what is pending, while no other changes the machine.
template <class Work>
PendingResult OnPending(milliseconds timeout, const std::function<bool()>& isCancelled, Work work)
{
    PendingResult result;
    const std::wstring folder = ChangeFolder();
    if (LoadPendingChanges(folder).empty())
        result.outcome = PendingOutcome::NOTHING;
    else if (const auto lock = TakeLock(folder, timeout, isCancelled, result.holder))
        work(folder, result);
    else
        result.outcome = PendingOutcome::BUSY;
    return result;
}

} // namespace

GuardedResult ApplyGuarded(const DesiredOf& desired, const GuardedOptions& options)
{
    GuardedResult result;
    const auto folder = PreparedFolder(options.confirmation.has_value());
    std::optional<ChangeLock> lock;
    if (folder)
    {
        lock = TakeLock(*folder, options.apply.timeout, options.apply.isCancelled, result.holder);
        if (!lock)
        {
            result.outcome = GuardedOutcome::BUSY;
            return result;
        }
        RemoveReports(*folder);
        RemoveHalfWritten(*folder);
        RemoveEndedWatches(*folder);
        result.pending = FindWatched(*folder);
        if (result.pending)
        {
            result.outcome = GuardedOutcome::AWAITED;
            return result;
        }
    }
    PlanAndApply(folder, desired, options, result);
    return result;
}

PendingResult ConfirmPending(milliseconds timeout, const std::string& id)
{
    return OnPending(timeout, {}, [&](const std::wstring& folder, PendingResult& result) {
        const bool interrupted = ConfirmAll(folder, RecordsOf(folder, id), result);
        if (!result.records.empty())
            return;
        result.outcome = interrupted ? PendingOutcome::INTERRUPTED : PendingOutcome::NOTHING;
        if (!interrupted)
            std::ranges::copy_if(RecordsOf(folder, id), std::back_inserter(result.records), IsOver);
    });
}

PendingResult RestorePending(const ApplyOptions& options, const std::string& id)
{
    return OnPending(options.timeout, options.isCancelled, [&](const std::wstring& folder, PendingResult& result) {
        RestoreAll(folder, InOrder(RecordsOf(folder, id)), options, result);
    });
}

PendingResult DiscardPending(milliseconds timeout, const std::string& id)
{
    return OnPending(timeout, {}, [&](const std::wstring& folder, PendingResult& result) {
        result.records = RecordsOf(folder, id);
        if (result.records.empty())
            result.outcome = PendingOutcome::NOTHING;
        for (const PendingRecord& record : result.records)
            RemovePendingChange(folder, record.id);
    });
}

void WatchOver(const std::string& id, const ApplyOptions& options)
try
{
    constexpr milliseconds ECHO_TIMEOUT(1000);
    const WatchActions actions = {
        [&](const PendingChange& change) { return OpenOf(Restore(change, options)); },
        [&](const IpAddress& host) { return Answers(host, ECHO_TIMEOUT); },
    };
    WatchPendingChange(ChangeFolder(), id, actions);
}
catch (const std::exception&) // The record stays; the next zelkctl names it.
{
}

} // namespace zelk
