#include "change/state_change.h"

#include <algorithm>
#include <set>
#include <utility>

#include <state/answers/change_result.h>
#include <state/answers/reports.h>
#include <state/answers/watch_program.h>
#include <state/pending/guarded_apply.h>
#include <state/reading/read_machine.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "change/apply_environment.h"
#include "change/change_text.h"
#include "change/other_changes.h"
#include "change/permission.h"
#include "system/module_file.h"

namespace zelkctl
{
namespace
{

Answer DifferencesOf(const zelk::Plan& plan)
{
    auto notes = plan.notes;
    if (plan.differences.empty())
        notes.emplace_back("Nothing would be changed.");
    return {
        .value = zelk::PlanToJson(plan), .text = TextOf(plan), .notes = std::move(notes), .code = zelk::CodeOf(plan)};
}

/// What has become of a change that was not completed.
std::string FateOf(const zelk::ApplyResult& result)
{
    const char* const pszWhat =
        result.outcome == zelk::Outcome::CANCELLED ? "The change was cancelled" : "The change failed";
    if (!result.undo)
        return std::string(pszWhat) + "; what was done was kept.";
    return std::string(pszWhat) + (result.undo->open.empty() ? "; what was done was undone."
                                                             : "; not everything that was done could be undone.");
}

std::string SentenceOf(const StateChange& change, const zelk::ApplyResult& result)
{
    switch (result.outcome)
    {
    case zelk::Outcome::UNCHANGED: return "Nothing had to be changed.";
    case zelk::Outcome::CHANGED: return change.sDone;
    case zelk::Outcome::NOT_VERIFIED: return "All steps were done, but the machine does not show the whole change yet.";
    default: return FateOf(result);
    }
}

/// The tool itself, which can watch over a change.
zelk::WatchProgram OwnProgram()
{
    return zelk::MakeWatchProgram(ModuleFile(nullptr), ModuleFile(L"ZELK_NM.DLL"));
}

zelk::GuardedResult Apply(const StateChangeOf& changeOf, const StateChangeOptions& options)
{
    const ApplyEnvironment environment;
    zelk::GuardedOptions how{
        .apply = environment.Options(options.timeout), .confirmation = std::nullopt, .label = options.sLabel};
    how.apply.keep = options.bKeep;
    if (options.confirmWithin)
        how.confirmation = {*options.confirmWithin, options.waitFor, OwnProgram()};
    return zelk::ApplyGuarded([&](const zelk::Machine& machine) { return changeOf(machine).state; }, how);
}

/// What the user has to know of a change that can still be taken back.
std::string SentenceOf(const zelk::PendingChange& pending)
{
    if (pending.phase != zelk::PendingPhase::WAITING)
        return "\"zelkctl restore\" tries again to take the machine back.";
    return "Confirm the change with \"zelkctl confirm\" within " + std::to_string(*pending.confirmWithin) +
           " s, or the previous state is restored" +
           (pending.waitFor ? "; an answer from " + pending.waitFor->ToText() + " confirms it too." : ".");
}

std::string AdaptersOf(const zelk::Plan& plan)
{
    std::set<std::string> names;
    for (const zelk::Difference& difference : plan.differences)
        names.insert(difference.adapter);
    return names.size() == 1 ? *names.begin() : "";
}

/// The item that a place in a state of one adapter, or of the machine, belongs to; empty for none.
std::string ItemAt(std::string_view place)
{
    constexpr std::string_view ADAPTER = "/adapters/0";
    std::string sPath(place.substr(place.starts_with(ADAPTER) ? ADAPTER.size() : 0));
    if (const std::size_t index = sPath.find_first_of("0123456789", sPath.rfind('/')); index != std::string::npos)
        sPath.erase(sPath.rfind('/'));
    std::ranges::replace(sPath, '/', '.');
    return sPath.empty() ? "" : LabelOf(sPath.substr(1));
}

void RefuseFaults(const std::vector<zelk::Fault>& faults, std::string (*pNameOf)(std::string_view))
{
    if (!faults.empty())
        throw Failure(zelk::ReportOf(faults, pNameOf));
}

void RequireOutcome(const zelk::GuardedResult& result, bool bIsDocument)
{
    if (result.outcome == zelk::GuardedOutcome::BUSY)
        throw BusyFailure(result.holder);
    if (result.outcome == zelk::GuardedOutcome::AWAITED)
        throw AwaitedFailure(*result.pending);
    RefuseFaults(result.faults, bIsDocument ? &zelk::Printable : &ItemAt);
}

Answer AnswerOf(const StateChange& change, const zelk::Plan& plan, const zelk::ApplyResult& result,
                const std::optional<zelk::PendingChange>& pending = {})
{
    auto notes = plan.notes;
    notes.push_back(SentenceOf(change, result));
    if (pending)
        notes.push_back(SentenceOf(*pending));
    return {.value = zelk::ChangeToJson(result, plan, pending),
            .text = TextOf(result),
            .notes = std::move(notes),
            .code = zelk::CodeOf(result.outcome)};
}

} // namespace

void RefuseDocument(const std::vector<zelk::Fault>& faults)
{
    RefuseFaults(faults, &zelk::Printable);
}

Answer Perform(const StateChangeOf& changeOf, const StateChangeOptions& options)
{
    const zelk::Machine machine = zelk::ReadMachine();
    const StateChange change = changeOf(machine);
    std::vector<zelk::Fault> faults;
    const zelk::Plan plan = zelk::MakePlan(machine, change.state, faults);
    RefuseFaults(faults, change.bIsDocument ? &zelk::Printable : &ItemAt);
    if (options.bCheck)
        return DifferencesOf(plan);
    if (plan.differences.empty())
        return AnswerOf(change, plan, zelk::Apply(machine, plan, {}));
    RequireElevation(AdaptersOf(plan));
    if (change.bCanDisconnect)
        RequireConfirmation(AdaptersOf(plan), options.bConfirmed);
    const zelk::GuardedResult guarded = Apply(changeOf, options);
    RequireOutcome(guarded, change.bIsDocument);
    return AnswerOf(change, guarded.plan, guarded.result, guarded.pending);
}

} // namespace zelkctl
