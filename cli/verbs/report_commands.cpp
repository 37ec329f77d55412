#include "verbs/report_commands.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <state/desired/json_form.h>
#include <state/plan/plan.h>
#include <state/platform/file_search.h>
#include <state/reading/read_machine.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "change/state_change.h"
#include "parser/document.h"
#include "records/answer_schema.h"
#include "report/machine_parser.h"
#include "report/page.h"
#include "system/utf8.h"
#include "system/whole_file.h"
#include "trace/trace_follower.h"
#include "trace/trace_record.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

/// What the user gave.
struct ReportRequest
{
    std::string sFile;
    std::vector<std::string> readings;
    std::string sDesired;
    std::string sResult;
    std::string sProgram;
    bool bForce = false;

    [[nodiscard]] bool IsOfThisMachine() const { return readings.empty(); }
};

/// The first fault, which names its file and the place there.
void RefuseFile(const char* pszArgument, const std::string& sFile, const std::vector<zelk::Fault>& faults)
{
    if (faults.empty())
        return;
    const zelk::Fault& fault = faults.front();
    const std::string sPlace = fault.place.empty() ? "" : Printable(fault.place) + ": ";
    throw Failure({.code = EXIT_USAGE,
                   .sReason = std::string(pszArgument) + ": " + Quoted(sFile) + ": " + sPlace + Printable(fault.text) +
                              "; nothing was written"});
}

std::string NameOfFile(const std::string& sFile)
{
    return ToUtf8(std::filesystem::path(FromUtf8(sFile)).stem().wstring());
}

/// The files that a path with "*" or "?" in its last part stands for, in the order of their names: no shell of this
/// system expands it for a program. A path without them is given back as it is, whether there is such a file or not.
std::vector<std::string> FilesOf(const std::string& sReading)
{
    const std::string sFolder = sReading.substr(0, sReading.find_last_of("\\/:") + 1);
    if (sReading.find_first_of("*?", sFolder.size()) == std::string::npos)
        return {sReading};
    std::vector<std::string> files;
    for (const zelk::FoundFile& found : zelk::FindFiles(FromUtf8(sReading)))
        if (!found.isFolder)
            files.push_back(sFolder + ToUtf8(found.name));
    if (files.empty())
        throw UsageError("READING", "there is no file " + Quoted(sReading));
    std::ranges::sort(files);
    return files;
}

Json GivenMachines(const std::vector<std::string>& readings)
{
    const MachineParser parser;
    Json machines = Json::array();
    for (const std::string& sReading : readings)
        for (const std::string& sFile : FilesOf(sReading))
        {
            std::vector<zelk::Fault> faults;
            for (Json& machine : parser.Machines(ReadDocument("READING", sFile), NameOfFile(sFile), faults))
                machines.push_back(std::move(machine));
            RefuseFile("READING", sFile, faults);
        }
    return machines;
}

Json DifferenceOf(const zelk::Machine& machine, const std::string& sFile)
{
    std::vector<zelk::Fault> faults;
    const zelk::DesiredState state = zelk::ParseDesiredState(ReadDocument("--desired", sFile), faults);
    RefuseDocument(faults);
    const zelk::Plan plan = zelk::MakePlan(machine, state, faults);
    RefuseDocument(faults);
    return zelk::ToJson(plan);
}

Json TraceAt(const TraceLocation& location)
{
    TraceFollower trace(location);
    const std::string sLines = trace.Take();
    return RecordsOf(TraceParser().Parse(sLines + trace.Pending()));
}

Json ThisMachine(const ReportRequest& request)
{
    const zelk::Machine reading = zelk::ReadMachine();
    Json machine = {{"machine", reading.identity.computerName.value_or("This machine")},
                    {"reading", zelk::ToJson(reading)}};
    if (!request.sDesired.empty())
        machine["difference"] = DifferenceOf(reading, request.sDesired);
    if (!request.sResult.empty())
    {
        std::vector<zelk::Fault> faults;
        MachineParser().AddApplied(machine, ReadDocument("--result", request.sResult), faults);
        RefuseFile("--result", request.sResult, faults);
    }
    Json trace = TraceAt(request.sProgram.empty() ? LocateTrace() : LocateTraceOf(request.sProgram));
    if (!trace.empty())
        machine["trace"] = std::move(trace);
    return machine;
}

void RequireUse(const ReportRequest& request)
{
    const std::pair<const char*, const std::string&> own[] = {
        {"--desired", request.sDesired}, {"--result", request.sResult}, {"--program", request.sProgram}};
    for (const auto& [pszOption, sValue] : own)
        if (!sValue.empty() && !request.IsOfThisMachine())
            throw UsageError(pszOption, "it is about this machine and cannot be combined with READING");
    const std::wstring sPath = FromUtf8(request.sFile);
    if (!request.bForce && std::filesystem::exists(sPath) && !IsPage(sPath))
        throw Failure({.code = EXIT_USAGE,
                       .sReason = "FILE: " + Quoted(request.sFile) +
                                  " exists and is not a page of this tool; nothing was written",
                       .sHint = "The page is the first argument. Pass --force to replace the file."});
}

Answer Report(const ReportRequest& request)
{
    RequireUse(request);
    Json machines = request.IsOfThisMachine() ? Json::array({ThisMachine(request)}) : GivenMachines(request.readings);
    const std::size_t count = machines.size();
    WriteWholeFile(FromUtf8(request.sFile), MakePage(std::move(machines)));
    return {.value = {},
            .text = "",
            .notes = {Quoted(request.sFile) + " was written: " + std::to_string(count) +
                      (count == 1 ? " machine." : " machines.")}};
}

} // namespace

void AddReportCommand(Command tool)
{
    Command verb = tool.AddVerb({REPORT_VERB, "Write a page that shows this machine, or many", "report network.html"});
    verb.AddRemark(
        "The page is one HTML file that needs no network. It draws the adapters, addresses, gateways and DNS "
        "servers, and shows what differs from a desired state, the last change, and the trace.\n\n"
        "A READING is what \"zelkctl show --json\" printed on a machine. Without one the page shows this "
        "machine, with its trace. A file that exists is replaced if it is such a page.");
    const auto file = verb.AddArgument({"FILE", "Where the page is written", "FILE.html"});
    const auto readings = verb.AddOptionalArguments(
        {"READING", "Readings of other machines, also as *.json; - reads the standard input", "READING.json|-"});
    const auto desired = verb.AddOption({"--desired", "Show what differs on this machine from this state", "FILE"});
    const auto result =
        verb.AddOption({"--result", "Show this last change, which \"zelkctl apply --json\" printed", "FILE"});
    const auto program = verb.AddOption(
        {"--program", "Show the trace of this program, or of its directory, instead of zelkctl's own", "PATH"});
    const auto force = verb.AddFlag("--force", "Replace a file that is not such a page");
    verb.Answers({}, [=] { return Report({file(), readings(), desired(), result(), program(), force()}); });
}

} // namespace zelkctl
