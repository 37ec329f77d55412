#include "verbs/pending_commands.h"

#include <algorithm>

#include <state/answers/pending_list.h>
#include <state/answers/pending_result.h>
#include <state/answers/reports.h>
#include <state/fields/schema.h>
#include <state/pending/change_folder.h>
#include <state/pending/guarded_apply.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "answer/value_text.h"
#include "change/apply_environment.h"
#include "change/change_schema.h"
#include "change/change_text.h"
#include "change/other_changes.h"
#include "change/permission.h"
#include "change/state_change.h"
#include "records/answer_schema.h"
#include "records/shown_fields.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

/// What a person sees of a change at first.
const std::vector<std::string> COLUMNS = {"id", "user", "since", "secondsLeft", "status"};

void AddPending(Command tool)
{
    Command verb =
        tool.AddVerb({"pending", "List changes that wait to be confirmed or were interrupted", "pending --json"});
    const auto fields = ShownFields<zelk::PendingEntry>();
    verb.AddFormOptions(fields);
    verb.Answers([] { return ListOf<zelk::PendingEntry>(); },
                 [fields] {
                     RequireElevation(""); // the folder is closed to others
                     return Answer{.value = RecordsOf(zelk::ReadPending()),
                                   .fields = fields,
                                   .columns = COLUMNS,
                                   .sWhenEmpty = "Nothing is pending."};
                 });
}

/// Why a change that somebody may have in mind is no longer pending.
std::string HintOf(const std::vector<zelk::PendingRecord>& records)
{
    if (records.empty())
        return "";
    return "The previous state was restored " + zelk::TextOf(*records.front().change->restoration) + '.';
}

/// `sId` is of the change that was asked for; empty for all.
[[noreturn]] void FailPending(const zelk::PendingResult& result, const std::string& sId)
{
    const zelk::ErrorReport report = zelk::ReportOf(result, sId);
    switch (result.outcome)
    {
    case zelk::PendingOutcome::BUSY: throw BusyFailure(result.holder);
    case zelk::PendingOutcome::INTERRUPTED: throw Failure(report, "\"zelkctl restore\" restores the previous state.");
    case zelk::PendingOutcome::REFUSED:
        throw Failure(report, "\"zelkctl restore --discard\" removes it; nothing else is changed.");
    default: throw Failure(report, HintOf(result.records));
    }
}

/// The change that was meant; empty for all.
GivenText AddChangeArgument(Command verb)
{
    const auto id =
        verb.AddOptionalArgument({"CHANGE", "Only the change that \"zelkctl pending\" lists under this id", "ID"});
    return [id] {
        std::string sId = id();
        if (!sId.empty() && !zelk::IsChangeId(sId))
            throw UsageError("CHANGE", Quoted(sId) + " is not the id of a change");
        return sId;
    };
}

void AddConfirm(Command tool)
{
    Command verb = tool.AddVerb({"confirm", "Keep a change that waits to be confirmed", "confirm"});
    const auto id = AddChangeArgument(verb);
    const auto timeout = AddTimeoutOption(verb, "How long to wait for another change to end; 60 by default");
    verb.AddJsonFlag();
    verb.Answers(
        [] {
            return ObjectOf({{"confirmed", {{"type", "array"}, {"items", zelk::SchemaOfType("string")}}}});
        },
        [timeout, id] {
            const std::string sId = id();
            RequireElevation("");
            const auto result = zelk::ConfirmPending(timeout(), sId);
            if (result.outcome != zelk::PendingOutcome::DONE)
                FailPending(result, sId);
            return Answer{.value = zelk::ConfirmationToJson(result), .text = "The change is confirmed.\n"};
        });
}

Answer Restore(std::chrono::seconds timeout, const std::string& sId)
{
    const ApplyEnvironment environment;
    const auto result = zelk::RestorePending(environment.Options(timeout), sId);
    const bool bDone = result.outcome == zelk::PendingOutcome::DONE;
    if (!bDone && result.outcome != zelk::PendingOutcome::NOT_RESTORED)
        FailPending(result, sId);
    std::string text;
    for (const zelk::Undo& undo : result.undone)
        text += TextOf(undo);
    return {.value = zelk::RestorationToJson(result),
            .text = std::move(text),
            .notes = {bDone ? "The previous state was restored."
                            : "Not everything could be restored; the change stays pending."},
            .code = zelk::CodeOf(result.outcome)};
}

Answer Discard(std::chrono::seconds timeout, const std::string& sId)
{
    const auto result = zelk::DiscardPending(timeout, sId);
    if (result.outcome != zelk::PendingOutcome::DONE)
        FailPending(result, sId);
    return {.value = zelk::RestorationToJson(result), .text = "What was pending is forgotten.\n"};
}

void AddRestore(Command tool)
{
    Command verb = tool.AddVerb({"restore", "Undo the changes that are pending", "restore"});
    const auto id = AddChangeArgument(verb);
    const auto discard = verb.AddFlag("--discard", "Forget what is pending without restoring anything");
    const auto yes = AddYesFlag(verb);
    const auto timeout = AddTimeoutOption(verb, "How long each command, and the verification, may take; 60 by default");
    verb.AddJsonFlag();
    verb.Answers(
        [] {
            return ObjectOf({{"restored", zelk::SchemaOfType("boolean")},
                             {"changes", {{"type", "array"}, {"items", zelk::SchemaOfType("string")}}},
                             {"undo", {{"type", "array"}, {"items", UndoSchema()}}}});
        },
        [=] {
            const std::string sId = id();
            RequireElevation("");
            if (std::ranges::any_of(zelk::ReadPending(), zelk::IsPending))
                RequireConfirmation("", yes());
            return discard() ? Discard(timeout(), sId) : Restore(timeout(), sId);
        });
}

} // namespace

void AddPendingCommands(Command tool)
{
    AddPending(tool);
    AddConfirm(tool);
    AddRestore(tool);
}

std::vector<std::string> PendingNotes(const std::string& sCommand)
try
{
    std::vector<std::string> notes;
    if (sCommand == "pending" || sCommand == "confirm" || sCommand == "restore")
        return notes;
    for (const zelk::PendingEntry& change : zelk::ReadPending())
        notes.push_back("A change " + (change.user ? "by " + *change.user + ' ' : std::string()) +
                        (change.since ? "of " + *change.since + ' ' : std::string()) +
                        (zelk::IsPending(change) ? "is pending. " : "was taken back. ") + change.status);
    return notes;
}
catch (const std::exception&) // what cannot be told is no reason to fail
{
    return {};
}

void WatchOverChange(const std::vector<std::string>& arguments)
{
    if (arguments.size() != 2 || !zelk::IsChangeId(arguments[1]))
        return;
    const std::string& sId = arguments[1];
    zelk::RunWatchProcess(sId, [&] { zelk::WatchOver(sId, {}); });
}

} // namespace zelkctl
