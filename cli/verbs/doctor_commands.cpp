#include "verbs/doctor_commands.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "adapters/adapter.h"
#include "adapters/adapter_diagnosis.h"
#include "answer/json_value.h"
#include "parser/command.h"
#include "system/elevation.h"
#include "system/environment.h"
#include "system/text.h"
#include "trace/trace_reader.h"
#include "verbs/version.h"

namespace zelkctl
{
namespace
{

/// How bad a finding is.
struct Severity
{
    const char* pszWord;
    Colour colour;
};
constexpr Severity OK = {"ok", Colour::GOOD};
constexpr Severity NOTE = {"note", Colour::WATCH};
constexpr Severity WRONG = {"wrong", Colour::BAD};

struct Finding
{
    const Severity* pSeverity;
    std::string sText;
    const Adapter* pAdapter = nullptr;
    std::vector<std::string> missing = {};
};
using Findings = std::vector<Finding>;

Findings One(const Severity& severity, std::string sText)
{
    return {{.pSeverity = &severity, .sText = std::move(sText)}};
}

/// What is known of the machine before anything is judged.
struct Machine
{
    SystemVersion version = GetSystemVersion();
    BackEnd backEnd = BackEndOf(version);
    bool bBootImage = IsBootImage();
    bool bElevated = IsElevated();
    TraceReader trace = {};
    // What the checks find out; findings point at the adapters.
    std::string sLibraryVersion = {};
    std::vector<Adapter> adapters = {};
};

Findings CheckSystem(Machine& machine)
{
    const SystemVersion& version = machine.version;
    return One(OK, "The system is Windows " + std::to_string(version.ulMajor) + '.' + std::to_string(version.ulMinor) +
                       " (build " + std::to_string(version.ulBuild) + "), " +
                       (machine.bBootImage ? "run from a boot image (MiniNT)." : "not a boot image."));
}

Findings CheckLibrary(Machine& machine)
{
    machine.sLibraryVersion = VersionNumber();
    return One(OK, "The library is ZELK_NM.DLL " + machine.sLibraryVersion + " and uses the back end for " +
                       (machine.backEnd == BackEnd::VISTA ? "Vista and later." : "systems before Vista."));
}

Findings CheckElevation(Machine& machine)
{
    if (machine.bElevated)
        return One(OK, "Elevated: the machine may be changed.");
    return One(NOTE, "Not elevated: what changes the machine will be refused. Run it from an elevated prompt.");
}

Findings CheckLogDirectory(Machine& machine)
{
    const std::wstring& sDirectory = machine.trace.Directory();
    const std::string sName = "The log directory " + ToUtf8(std::wstring_view(sDirectory));
    if (!machine.trace.HasDirectory())
        return One(WRONG, sName + " is missing: the library cannot tell why an operation fails. Make it.");
    if (!IsWritable(sDirectory))
        return One(WRONG, sName + " is not writable: the library cannot tell why an operation fails. Let this user "
                                  "write there.");
    return One(OK, sName + " is there and writable.");
}

Findings CheckFunctions(Machine& machine)
{
    Findings findings;
    for (const PlatformFunction& function : FunctionsOf(machine.backEnd))
        if (!HasFunction(L"IPHLPAPI.DLL", function.pszName))
            findings.push_back(
                {.pSeverity = function.pszWithout != nullptr ? &WRONG : &NOTE,
                 .sText = std::string("IPHLPAPI.DLL has no ") + function.pszName + ": " +
                          (function.pszWithout != nullptr ? function.pszWithout : "nothing needs it so far") + '.'});
    if (findings.empty())
        findings = One(OK, "IPHLPAPI.DLL has every function that the back end looks up.");
    return findings;
}

/// Apart from the others: no back end needs it, and a boot image commonly has none.
Findings CheckPropertySheet(Machine&)
{
    if (HasFunction(L"DEVMGR.DLL", "DeviceProperties_RunDLLW"))
        return One(OK, "DEVMGR.DLL has the property sheet of devices.");
    return One(NOTE, "DEVMGR.DLL is missing or has no DeviceProperties_RunDLLW: \"adapter options\" shows nothing.");
}

struct SystemCommand
{
    const wchar_t* pszName;
    const char* pszWithout;
};
constexpr SystemCommand SYSTEM_COMMANDS[] = {{L"cmd", "no other command can be run"},
                                             {L"netsh", "DNS servers, and from Vista on addresses, cannot be set"},
                                             {L"ipconfig", "DHCP leases can be neither renewed nor released"}};

Findings CheckCommands(Machine&)
{
    Findings findings;
    for (const SystemCommand& command : SYSTEM_COMMANDS)
        if (!HasCommand(command.pszName))
            findings.push_back({.pSeverity = &WRONG,
                                .sText = "The command " + ToUtf8(std::wstring_view(command.pszName)) +
                                         " is not found: " + command.pszWithout +
                                         ". Put the directory that has it, commonly Windows's System32, on the PATH."});
    if (findings.empty())
        findings = One(OK, "The commands cmd, netsh and ipconfig are found.");
    return findings;
}

Findings CheckAdapters(Machine& machine)
{
    machine.adapters = ListAdapters();
    if (machine.adapters.empty())
        return One(NOTE, "No network adapter is enabled for IPv4.");
    return One(OK,
               "The library lists the adapters; enabled for IPv4: " + std::to_string(machine.adapters.size()) + '.');
}

Finding FindingOf(const Adapter& adapter, Gap gap)
{
    const std::string sAdapter = "Adapter " + Quoted(adapter) + ": ";
    if (!gap.bIncomplete)
        return {&NOTE, sAdapter + gap.sText + '.', &adapter, std::move(gap.values)};
    const char* pszRemedy = gap.values.empty() ? "." : ". Installing its driver again writes that.";
    return {&WRONG, sAdapter + "its record is incomplete; " + gap.sText + pszRemedy, &adapter, std::move(gap.values)};
}

Findings CheckRecords(Machine& machine)
{
    Findings findings;
    for (const Adapter& adapter : machine.adapters)
    {
        auto gaps = GapsOf(adapter);
        if (std::ranges::none_of(gaps, &Gap::bIncomplete))
            findings.push_back({&OK, "Adapter " + Quoted(adapter) + ": its record is complete.", &adapter});
        for (Gap& gap : gaps)
            findings.push_back(FindingOf(adapter, std::move(gap)));
    }
    return findings;
}

struct Check
{
    const char* pszTopic;
    Findings (*pRun)(Machine&);
};
constexpr Check CHECKS[] = {{"system", CheckSystem},       {"library", CheckLibrary},
                            {"elevation", CheckElevation}, {"logDirectory", CheckLogDirectory},
                            {"functions", CheckFunctions}, {"functions", CheckPropertySheet},
                            {"commands", CheckCommands},   {"adapters", CheckAdapters},
                            {"record", CheckRecords}};

/// A check that cannot be made is a finding too, and the others are made all the same.
Findings Run(const Check& check, Machine& machine)
try
{
    return check.pRun(machine);
}
catch (const Failure& failure)
{
    const std::string& sHint = failure.What().sHint;
    return One(WRONG, std::string(failure.what()) + '.' + (sHint.empty() ? "" : ' ' + sHint));
}

Json EnvironmentOf(const Machine& machine)
{
    Json record;
    record["windowsVersion"] = std::to_string(machine.version.ulMajor) + '.' + std::to_string(machine.version.ulMinor);
    record["windowsBuild"] = machine.version.ulBuild;
    record["bootImage"] = machine.bBootImage;
    record["elevated"] = machine.bElevated;
    record["libraryVersion"] = machine.sLibraryVersion.empty() ? Json() : Json(machine.sLibraryVersion);
    record["backEnd"] = machine.backEnd == BackEnd::VISTA ? "Vista" : "PreVista";
    record["logDirectory"] = ToUtf8(std::wstring_view(machine.trace.Directory()));
    return record;
}

Json RecordOf(const char* pszTopic, const Finding& finding)
{
    Json record;
    record["severity"] = finding.pSeverity->pszWord;
    record["topic"] = pszTopic;
    record["adapter"] = finding.pAdapter != nullptr ? Json(CalledName(*finding.pAdapter)) : Json();
    record["text"] = finding.sText;
    record["missing"] = finding.missing.empty() ? Json() : Json(finding.missing);
    return record;
}

/// The word repeated in colour; the sentences of all findings begin in the same column.
std::string LineOf(const Finding& finding)
{
    constexpr std::size_t COLUMN = 7;
    const std::string sWord = finding.pSeverity->pszWord;
    return Painted(sWord, finding.pSeverity->colour, stdout) + std::string(COLUMN - sWord.size(), ' ') +
           Printable(finding.sText) + '\n';
}

void Diagnose(Output& output)
{
    Machine machine;
    Json records = Json::array();
    std::string text;
    for (const Check& check : CHECKS)
        for (const Finding& finding : Run(check, machine))
        {
            records.push_back(RecordOf(check.pszTopic, finding));
            text += LineOf(finding);
            if (finding.pSeverity == &WRONG)
                output.SetExitCode(EXIT_OPERATION_FAILED);
        }
    Json result;
    result["environment"] = EnvironmentOf(machine);
    result["findings"] = std::move(records);
    output.Answer(result, text);
}

} // namespace

void AddDoctorCommand(CLI::App& app, Output& output)
{
    CLI::App& command = AddVerb(app, {"doctor", "Find out what keeps the tool or the library from working", "doctor"});
    AddJsonFlag(command, output);
    AddRemark(command,
              "Every line begins with \"ok\", \"note\" or \"wrong\"; when something is wrong the exit code is 1.");
    Run(command, [&output] { Diagnose(output); });
}

} // namespace zelkctl
