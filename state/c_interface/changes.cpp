#include <state/c_interface/changes.h>

#include <winsock2.h>

#include <windows.h>

#include <state/answers/change_result.h>
#include <state/answers/pending_list.h>
#include <state/answers/pending_result.h>
#include <state/answers/reports.h>
#include <state/answers/watch_program.h>
#include <state/fields/json_value.h>
#include <state/platform/elevation.h>
#include <state/platform/module_file.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

void RequireElevation()
{
    if (!IsElevated().value_or(false))
        throw ReportedError(ReportOfMissingElevation());
}

/// The module that holds this function.
HMODULE OwnModule()
{
    constexpr DWORD FLAGS = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE module = nullptr;
    ::GetModuleHandleExW(FLAGS, reinterpret_cast<const wchar_t*>(&OwnModule), &module);
    return module;
}

/// The tool beside this DLL: whoever can put something else there could have replaced the DLL as well.
WatchProgram FindWatchProgram()
{
    const std::wstring library = ModuleFile(OwnModule());
    const std::wstring folder = library.substr(0, library.find_last_of(L'\\'));
    const std::wstring tool = folder + L"\\zelkctl.exe";
    if (library.empty() || ::GetFileAttributesW(tool.c_str()) == INVALID_FILE_ATTRIBUTES)
        throw ReportedError({.code = EXIT_NOT_POSSIBLE,
                             .reason = "confirmWithin requires zelkctl.exe beside ZELK_STATE.DLL, in " +
                                       ToUtf8(folder) + "; nothing was changed"});
    return MakeWatchProgram(tool, ModuleFile(::GetModuleHandleW(L"ZELK_NM.DLL")));
}

GuardedOptions GuardedOptionsOf(const ChangeOptions& options, ProgressCallback& progress)
{
    GuardedOptions guarded{
        .apply = progress.Options(options.timeout), .confirmation = std::nullopt, .label = options.label};
    guarded.apply.keep = options.keep;
    if (options.confirmWithin)
        guarded.confirmation = {*options.confirmWithin, options.waitFor, FindWatchProgram()};
    return guarded;
}

void RequireNoFaults(const std::vector<Fault>& faults)
{
    if (!faults.empty())
        throw ReportedError(ReportOf(faults));
}

void RequireApplied(const GuardedResult& result)
{
    if (result.outcome == GuardedOutcome::BUSY)
        throw ReportedError(ReportOfBusy(result.holder));
    if (result.outcome == GuardedOutcome::AWAITED)
        throw ReportedError(ReportOfAwaited(*result.pending));
    RequireNoFaults(result.faults);
}

Answer AnswerOf(const ApplyResult& result, const Plan& plan, const std::optional<PendingChange>& pending = {})
{
    return {CodeOf(result.outcome), ChangeToJson(result, plan, pending)};
}

} // namespace

Answer ApplyDesiredState(const DesiredState& state, const ChangeOptions& options, ProgressCallback& progress)
{
    const Machine machine = ReadMachine();
    std::vector<Fault> faults;
    const Plan plan = MakePlan(machine, state, faults);
    RequireNoFaults(faults);
    if (plan.differences.empty())
        return AnswerOf(Apply(machine, plan, {}), plan);
    RequireElevation();
    const GuardedResult guarded =
        ApplyGuarded([&](const Machine&) { return state; }, GuardedOptionsOf(options, progress));
    RequireApplied(guarded);
    return AnswerOf(guarded.result, guarded.plan, guarded.pending);
}

Answer ListPending()
{
    RequireElevation(); // the folder is closed to others
    return {EXIT_DONE, JsonValue<std::vector<PendingEntry>>::Write(ReadPending())};
}

Answer Confirm(const ConfirmOptions& options)
{
    RequireElevation();
    const PendingResult result = ConfirmPending(options.timeout, options.change);
    if (result.outcome != PendingOutcome::DONE)
        throw ReportedError(ReportOf(result, options.change));
    return {EXIT_DONE, ConfirmationToJson(result)};
}

Answer Restore(const RestoreOptions& options, ProgressCallback& progress)
{
    RequireElevation();
    const PendingResult result = options.discard ? DiscardPending(options.timeout, options.change)
                                                 : RestorePending(progress.Options(options.timeout), options.change);
    if (result.outcome != PendingOutcome::DONE && result.outcome != PendingOutcome::NOT_RESTORED)
        throw ReportedError(ReportOf(result, options.change));
    return {CodeOf(result.outcome), RestorationToJson(result)};
}

} // namespace zelk
