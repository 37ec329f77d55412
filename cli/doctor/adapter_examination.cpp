#include "doctor/adapter_examination.h"

#include <algorithm>
#include <string>

#include <state/fields/field.h>
#include <state/platform/registry_keys.h>

#include "adapters/adapter.h"
#include "answer/value_text.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

using enum Severity;

std::string Path(const std::wstring& sKey)
{
    return "HKLM\\" + ToUtf8(sKey);
}

/// Of a class key that is not known: it is looked for by what it holds.
std::string ClassValue(const zelk::Adapter& adapter, const char* pszValue)
{
    return Path(zelk::CLASS_KEY) + '\\' + adapter.classKey.value_or("*") + '\\' + pszValue;
}

std::string ConnectionValue(const zelk::Adapter& adapter, const char* pszValue)
{
    const std::string sGuid = adapter.guid ? adapter.guid->ToText() : "*";
    return Path(zelk::CONNECTIONS) + '\\' + sGuid + "\\Connection\\" + pszValue;
}

std::vector<std::string> ClassKeyValues(const zelk::Adapter& adapter)
{
    return {ClassValue(adapter, "NetCfgInstanceId")};
}

std::vector<std::string> DescriptionValues(const zelk::Adapter& adapter)
{
    return {ClassValue(adapter, "DriverDesc")};
}

std::vector<std::string> DeviceValues(const zelk::Adapter& adapter)
{
    return {ClassValue(adapter, "DeviceInstanceID"), ConnectionValue(adapter, "PnpInstanceID")};
}

std::vector<std::string> NameValues(const zelk::Adapter& adapter)
{
    return {ConnectionValue(adapter, "Name")};
}

std::vector<std::string> InterfaceValues(const zelk::Adapter&)
{
    return {Path(zelk::LAN_DEVICES) + "\\*\\DeviceInstance"};
}

bool HasClassKey(const zelk::Adapter& adapter)
{
    return adapter.classKey.has_value();
}

bool HasDescription(const zelk::Adapter& adapter)
{
    return !adapter.classKey || adapter.driver.description.has_value();
}

bool HasDevice(const zelk::Adapter& adapter)
{
    return !adapter.classKey || adapter.deviceInstance.has_value();
}

bool HasConnectionName(const zelk::Adapter& adapter)
{
    return adapter.connectionName.has_value();
}

bool HasInterface(const zelk::Adapter& adapter)
{
    return !adapter.deviceInstance || adapter.canChangeOptions == true;
}

/// Something that should be known of an adapter, and what does not work without it.
struct Requirement
{
    bool (*pIsKnown)(const zelk::Adapter&);
    std::vector<std::string> (*pValues)(const zelk::Adapter&); ///< of the registry, any of which would do
    Severity severity;
    const char* pszWithout;
};
constexpr Requirement REQUIREMENTS[] = {
    {HasClassKey, ClassKeyValues, WRONG, "it has no subkey under the network class key, so its driver cannot be found"},
    {HasDescription, DescriptionValues, WRONG, "it has no description"},
    {HasDevice, DeviceValues, WRONG, "its device is not known, so it can be neither enabled nor disabled"},
    {HasConnectionName, NameValues, WRONG, "it has no connection name, by which netsh and ipconfig would know it"},
    {HasInterface, InterfaceValues, NOTE, "its driver offers no LAN device interface, so its options cannot be shown"}};

void ExamineRequirements(const zelk::Adapter& adapter, std::vector<Finding>& findings)
{
    bool bComplete = true;
    for (const Requirement& requirement : REQUIREMENTS)
    {
        if (requirement.pIsKnown(adapter))
            continue;
        bComplete &= requirement.severity != WRONG;
        const char* pszRemedy =
            requirement.severity == WRONG ? ". Reinstalling its driver restores what is missing." : ".";
        findings.push_back({requirement.severity,
                            "Adapter " + Quoted(adapter) + ": " + requirement.pszWithout + pszRemedy,
                            zelk::NameOf(adapter), requirement.pValues(adapter)});
    }
    if (bComplete)
        findings.push_back({OK, "Adapter " + Quoted(adapter) + ": its record is complete.", zelk::NameOf(adapter)});
}

Finding FindingOf(const zelk::Problem& problem, const zelk::Adapter* pAdapter)
{
    const std::string sAbout = pAdapter != nullptr ? "Adapter " + Quoted(*pAdapter) + ": " : "";
    return {NOTE, sAbout + TextOf(zelk::ToJson(problem)) + '.',
            pAdapter != nullptr ? std::optional(zelk::NameOf(*pAdapter)) : std::nullopt};
}

/// Why an adapter does not work, and what can be done; nothing for one that does.
std::optional<Finding> FindingOf(const zelk::Adapter& adapter)
{
    const std::string sName = zelk::NameOf(adapter);
    const std::string sAdapter = "Adapter " + Quoted(adapter);
    const std::string sProblem = adapter.deviceProblem ? ": " + adapter.deviceProblem->text + " (code " +
                                                             std::to_string(adapter.deviceProblem->code) + ')'
                                                       : "";
    switch (adapter.status)
    {
    case zelk::AdapterStatus::DISABLED:
        return Finding{NOTE, sAdapter + " is disabled. To enable it, run: zelkctl adapter enable " + Argument(sName),
                       sName};
    case zelk::AdapterStatus::FAILED: return Finding{WRONG, sAdapter + " does not start" + sProblem + '.', sName};
    case zelk::AdapterStatus::NOT_PRESENT:
        return Finding{NOTE, sAdapter + " is installed, but its device is not present.", sName};
    case zelk::AdapterStatus::UNKNOWN:
        if (!adapter.index)
            return Finding{NOTE, sAdapter + " is installed, but it is not running for a reason that is not known.",
                           sName};
        break;
    default: break;
    }
    return std::nullopt;
}

} // namespace

std::vector<Finding> ExamineAdapters(const zelk::Machine& machine)
{
    std::vector<Finding> findings;
    std::size_t working = 0;
    for (const zelk::Adapter& adapter : machine.adapters)
    {
        if (adapter.hidden)
            continue;
        auto finding = FindingOf(adapter);
        if (finding)
            findings.push_back(std::move(*finding));
        else
            ++working;
    }
    const bool bNone = working == 0;
    const std::string sNone = findings.empty() ? "This machine has no network adapter; a driver may be missing."
                                               : "No network adapter on this machine works.";
    findings.insert(findings.begin(), {bNone ? NOTE : OK,
                                       bNone ? sNone : "Network adapters that work: " + std::to_string(working) + '.'});
    return findings;
}

std::vector<Finding> ExamineRecords(const zelk::Machine& machine)
{
    std::vector<Finding> findings;
    for (const zelk::Adapter& adapter : machine.adapters)
        if (!adapter.hidden && !FindingOf(adapter))
            ExamineRequirements(adapter, findings);
    return findings;
}

std::vector<Finding> ExamineReading(const zelk::Machine& machine)
{
    std::vector<Finding> findings;
    for (const zelk::Problem& problem : machine.problems)
        findings.push_back(FindingOf(problem, nullptr));
    for (const zelk::Adapter& adapter : machine.adapters)
        for (const zelk::Problem& problem : adapter.problems)
            if (!adapter.hidden)
                findings.push_back(FindingOf(problem, &adapter));
    return findings;
}

} // namespace zelkctl
