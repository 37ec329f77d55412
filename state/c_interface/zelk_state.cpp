#include <zelk_state/zelk_state.h>

#include <state/answers/change_result.h>
#include <state/answers/library_version.h>
#include <state/answers/reports.h>
#include <state/c_interface/arguments.h>
#include <state/c_interface/boundary.h>
#include <state/c_interface/changes.h>
#include <state/desired/adapter_name.h>
#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/fields/field.h>
#include <state/reading/read_machine.h>

using namespace zelk;

namespace
{

Answer Version()
{
    const LibraryVersion version = ReadLibraryVersion();
    if (version.version.empty())
        throw ReportedError({.reason = "ZELK_NM.DLL does not tell its version", .operation = "GetModuleProperty"});
    return {EXIT_DONE, ToJson(version)};
}

Answer ExportNamed(const std::optional<std::vector<std::string>>& names)
{
    const Machine machine = ReadMachine();
    if (!names)
        return {EXIT_DONE, ToJson(ExportState(machine, ExportedAdapters(machine), true).state)};
    std::vector<const Adapter*> adapters;
    for (const std::string& name : *names)
    {
        const auto found = FindAdapters(machine, name);
        if (found.size() != 1)
            throw ReportedError(ReportOfName(name, found));
        adapters.push_back(found.front());
    }
    return {EXIT_DONE, ToJson(ExportState(machine, adapters, false).state)};
}

Answer PlanFor(const DesiredState& state)
{
    std::vector<Fault> faults;
    const Plan plan = MakePlan(ReadMachine(), state, faults);
    if (!faults.empty())
        throw ReportedError(ReportOf(faults));
    return {CodeOf(plan), PlanToJson(plan)};
}

} // namespace

void zelk_state_free(char* text)
{
    FreeText(text);
}

int zelk_state_version(char** result, char** error)
{
    return Give(result, error, &Version);
}

int zelk_state_read(const char* options, char** result, char** error)
{
    return Give(result, error, [=] { return Answer{EXIT_DONE, ToJson(ReadMachine(ReadOptionsOf(options)))}; });
}

int zelk_state_export(const char* options, char** result, char** error)
{
    return Give(result, error, [=] { return ExportNamed(ExportOptionsOf(options)); });
}

int zelk_state_plan(const char* desired, const char* options, char** result, char** error)
{
    return Give(result, error, [=] {
        RefuseOptions(options);
        return PlanFor(DesiredStateOf(desired));
    });
}

int zelk_state_apply(const char* desired, const char* options, zelk_state_progress progress, void* context,
                     char** result, char** error)
{
    return Give(result, error, [=] {
        const ChangeOptions given = ChangeOptionsOf(options);
        ProgressCallback callback(progress, context);
        return ApplyDesiredState(DesiredStateOf(desired), given, callback);
    });
}

int zelk_state_pending(const char* options, char** result, char** error)
{
    return Give(result, error, [=] {
        RefuseOptions(options);
        return ListPending();
    });
}

int zelk_state_confirm(const char* options, char** result, char** error)
{
    return Give(result, error, [=] { return Confirm(ConfirmOptionsOf(options)); });
}

int zelk_state_restore(const char* options, zelk_state_progress progress, void* context, char** result, char** error)
{
    return Give(result, error, [=] {
        ProgressCallback callback(progress, context);
        return Restore(RestoreOptionsOf(options), callback);
    });
}
