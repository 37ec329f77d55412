#include "doctor/examination.h"

#include <algorithm>
#include <string>
#include <utility>

#include <zelk_common/looked_up_functions.h>

#include "answer/failure.h"
#include "doctor/adapter_examination.h"
#include "doctor/library_version.h"
#include "records/trace_settings.h"
#include "system/elevation.h"
#include "system/probes.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

using enum Severity;
using Findings = std::vector<Finding>;

Findings One(Severity severity, std::string sText)
{
    return {{.severity = severity, .sText = std::move(sText)}};
}

Findings ExamineSystem(const zelk::Machine& machine)
{
    const zelk::Environment& environment = machine.environment;
    return One(OK, "The system is Windows " + std::to_string(environment.majorVersion) + '.' +
                       std::to_string(environment.minorVersion) + " (build " + std::to_string(environment.build) +
                       "), " + (environment.bootImage ? "running from a boot image (MiniNT)." : "not a boot image."));
}

Findings ExamineLibrary(const zelk::Machine& machine)
{
    return One(
        OK, "The library is ZELK_NM.DLL " + ReadLibraryVersion().version + " and uses the back end for " +
                (machine.environment.backEnd == zelk::BackEnd::VISTA ? "Vista and later." : "systems before Vista."));
}

Findings ExamineElevation(const zelk::Machine&)
{
    if (IsElevated())
        return One(OK, "zelkctl runs elevated and can change this machine.");
    return One(NOTE, "zelkctl does not run elevated and cannot change this machine. Run it from an elevated prompt.");
}

Findings ExamineTrace(const zelk::Machine&)
{
    const TraceLocation location = LocateTrace();
    const std::string sName = "The log directory " + ToUtf8(location.sDirectory);
    if (!location.HasDirectory())
        return One(WRONG, sName + " is missing, so the reasons for failures are not recorded. Create it.");
    if (!IsWritable(location.sDirectory))
        return One(WRONG, sName +
                              " is not writable, so the reasons for failures are not recorded. Make it writable for "
                              "this user.");
    Findings findings = One(OK, sName + " exists and is writable.");
    if (ReadTraceSettings(location).uiLevel == 0)
        findings.push_back({NOTE, "The trace level is 0, so the reasons for failures are not recorded. \"zelkctl trace "
                                  "level 1\" records them."});
    return findings;
}

/// A function that the library looks up when it starts, and what does not work without it.
struct PlatformFunction
{
    const char* pszName;
    const char* pszWithout; ///< null when the library does not use it
};
constexpr PlatformFunction PRE_VISTA_FUNCTIONS[] = {
    {zelk_common::SET_ADAPTER_IP_ADDRESS, "static addresses cannot be set"}};

constexpr const char* NO_NEW_ROUTES = "routes cannot be added and default gateways cannot be set";
constexpr PlatformFunction VISTA_FUNCTIONS[] = {
    {zelk_common::GET_UNICAST_IP_ADDRESS_TABLE, "addresses can neither be listed nor replaced"},
    {zelk_common::GET_IP_FORWARD_TABLE2, "routes and default gateways can neither be listed nor replaced"},
    {zelk_common::FREE_MIB_TABLE, "the memory of address and route lists is never freed"},
    {zelk_common::CONVERT_INTERFACE_INDEX_TO_LUID, NO_NEW_ROUTES},
    {zelk_common::CREATE_IP_FORWARD_ENTRY2, NO_NEW_ROUTES},
    {zelk_common::DELETE_IP_FORWARD_ENTRY2, "default gateways cannot be replaced"},
    {zelk_common::GET_TCP6_TABLE, "TCP connections over IPv6 cannot be listed"},
    {zelk_common::CREATE_UNICAST_IP_ADDRESS_ENTRY, nullptr},
    {zelk_common::DELETE_UNICAST_IP_ADDRESS_ENTRY, nullptr},
    {zelk_common::INITIALIZE_UNICAST_IP_ADDRESS_ENTRY, nullptr}};

std::span<const PlatformFunction> FunctionsOf(zelk::BackEnd backEnd)
{
    if (backEnd == zelk::BackEnd::VISTA)
        return VISTA_FUNCTIONS;
    return PRE_VISTA_FUNCTIONS;
}

Findings ExamineFunctions(const zelk::Machine& machine)
{
    Findings findings;
    for (const PlatformFunction& function : FunctionsOf(machine.environment.backEnd))
        if (!HasFunction(zelk_common::IP_HELPER, function.pszName))
            findings.push_back(
                {function.pszWithout != nullptr ? WRONG : NOTE,
                 std::string("IPHLPAPI.DLL has no ") + function.pszName + ": " +
                     (function.pszWithout != nullptr ? std::string("with the library, ") + function.pszWithout
                                                     : std::string("nothing uses it")) +
                     '.'});
    return findings.empty() ? One(OK, "IPHLPAPI.DLL has every function that the back end uses.") : findings;
}

/// Apart from the others: no back end needs it, and a boot image commonly has none.
Findings ExaminePropertySheet(const zelk::Machine&)
{
    if (HasFunction(zelk_common::DEVICE_MANAGER, zelk_common::DEVICE_PROPERTIES))
        return One(OK, "DEVMGR.DLL can show the property sheets of devices.");
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

Findings ExamineCommands(const zelk::Machine&)
{
    Findings findings;
    for (const SystemCommand& command : SYSTEM_COMMANDS)
        if (!HasCommand(command.pszName))
            findings.push_back({WRONG, "The command " + ToUtf8(std::wstring_view(command.pszName)) +
                                           " is not found: " + command.pszWithout +
                                           ". Add its directory, usually the system's System32, to the PATH."});
    return findings.empty() ? One(OK, "The commands cmd, netsh and ipconfig are found.") : findings;
}

struct Check
{
    const char* pszTopic;
    Findings (*pExamine)(const zelk::Machine&);
};
constexpr Check CHECKS[] = {{"system", ExamineSystem},       {"library", ExamineLibrary},
                            {"elevation", ExamineElevation}, {"trace", ExamineTrace},
                            {"functions", ExamineFunctions}, {"functions", ExaminePropertySheet},
                            {"commands", ExamineCommands},   {"adapters", ExamineAdapters},
                            {"record", ExamineRecords},      {"reading", ExamineReading}};

/// A check that cannot be made is a finding too, and the others are made all the same.
Findings Run(const Check& check, const zelk::Machine& machine)
try
{
    return check.pExamine(machine);
}
catch (const Failure& failure)
{
    const std::string& sHint = failure.What().sHint;
    return One(WRONG, std::string(failure.what()) + '.' + (sHint.empty() ? "" : ' ' + sHint));
}

} // namespace

std::vector<Finding> Examine(const zelk::Machine& machine)
{
    Findings all;
    for (const Check& check : CHECKS)
        for (Finding& finding : Run(check, machine))
        {
            finding.sTopic = check.pszTopic;
            all.push_back(std::move(finding));
        }
    return all;
}

} // namespace zelkctl
