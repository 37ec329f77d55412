#include "verbs/identity_commands.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <sstream>
#include <string>

#include <state/fields/json_value.h>
#include <state/reading/read_machine.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "answer/value_text.h"
#include "system/utf8.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

/// The library writes any text, and the system would have to start with it.
bool IsHostName(const std::string& sName)
{
    constexpr std::size_t LONGEST_LABEL = 63;
    const auto IsAllowed = [](unsigned char byte) { return byte >= 0x80 || std::isalnum(byte) != 0 || byte == '-'; };
    return !sName.empty() && sName.size() <= LONGEST_LABEL && std::all_of(sName.begin(), sName.end(), IsAllowed);
}

bool IsDomainName(const std::string& sName)
{
    constexpr std::size_t LONGEST_NAME = 255;
    std::istringstream labels(sName + '.'); // so that an empty last label counts
    for (std::string sLabel; std::getline(labels, sLabel, '.');)
        if (!IsHostName(sLabel))
            return false;
    return sName.size() <= LONGEST_NAME;
}

/// That the identity's item with this key becomes the name.
Aspect NameBecomes(const std::string& sKey, const std::string& sWanted)
{
    const Field field = Only({sKey}, ShownFields<zelk::Identity>()).front();
    return {.sKey = sKey,
            .sLabel = field.sLabel,
            .read = [field](CurrentMachine& machine) { return ValueOf(field, zelk::ToJson(machine.Get().identity)); },
            .wanted = sWanted};
}

Change SetName(const std::string& sName)
{
    if (!IsHostName(sName))
        throw UsageError("NAME", Quoted(sName) + " is not a computer name: 1 to 63 letters, digits and \"-\"");
    return {.sOperation = "SetComputerNameW",
            .sDoing = "Setting the computer name",
            .sDone = "The computer name will be " + Quoted(sName) + '.',
            .aspects = {NameBecomes("configured.computerName", sName)},
            .operation = [name = FromUtf8(sName)] { return TOLVA::SetComputerNameW(name); },
            .reach = Reach::NEXT_START};
}

Change SetWorkgroup(const std::string& sName)
{
    if (sName.empty())
        throw UsageError("NAME", "a workgroup needs a name");
    return {.sOperation = "SetWorkgroupName",
            .sDoing = "Setting the workgroup",
            .sDone = "The workgroup is " + Quoted(sName) + '.',
            .aspects = {NameBecomes("workgroup", sName)},
            .operation = [name = FromUtf8(sName)] { return TOLVA::SetWorkgroupName(name); }};
}

Change SetSuffix(const std::string& sSuffix)
{
    if (!sSuffix.empty() && !IsDomainName(sSuffix))
        throw UsageError("SUFFIX", Quoted(sSuffix) + " is not a DNS domain");
    return {.sOperation = "SetPrimaryDnsSuffix",
            .sDoing = "Setting the primary DNS suffix",
            .sDone = "The primary DNS suffix will be " + (sSuffix.empty() ? "empty" : Quoted(sSuffix)) + '.',
            .aspects = {NameBecomes("configured.primaryDnsSuffix", sSuffix)},
            .operation = [suffix = FromUtf8(sSuffix)] { return TOLVA::SetPrimaryDnsSuffix(suffix); },
            .reach = Reach::NEXT_START};
}

void AddShow(Command noun)
{
    Command verb = noun.AddVerb({"show", "Show the names of this machine", "identity show --json"});
    const auto fields = ShownFields<zelk::Identity>();
    verb.AddFormOptions(fields);
    verb.Answers([] { return zelk::ReferenceTo("identity"); },
                 [fields] { return Answer{.value = zelk::ToJson(zelk::ReadMachine().identity), .fields = fields}; });
}

/// A verb whose argument is the new name.
void AddSetVerb(Command noun, const CommandHelp& help, const std::function<GivenText(Command&)>& add,
                Change (*pPlan)(const std::string&))
{
    Command verb = noun.AddVerb(help);
    MakeChangeVerb(verb, [name = add(verb), pPlan] { return pPlan(name()); });
}

} // namespace

void AddIdentityCommands(Command tool)
{
    Command noun = tool.AddNoun({"identity", "Names of this machine", "identity show"});
    AddShow(noun);
    AddSetVerb(
        noun, {"set-name", "Set the computer name, which takes effect at the next start", "identity set-name station7"},
        [](Command& verb) {
            return verb.AddArgument({"NAME", "The name, without a domain", "NAME"});
        },
        SetName);
    AddSetVerb(
        noun, {"set-workgroup", "Set the workgroup of this machine", "identity set-workgroup WORKSHOP"},
        [](Command& verb) {
            return verb.AddArgument({"NAME", "The name of the workgroup", "NAME"});
        },
        SetWorkgroup);
    AddSetVerb(
        noun,
        {"set-suffix", "Set or clear the primary DNS suffix, which takes effect at the next start",
         "identity set-suffix example.org"},
        [](Command& verb) {
            return verb.AddOptionalArgument({"SUFFIX", "The suffix; without one it is cleared", "DOMAIN"});
        },
        SetSuffix);
}

} // namespace zelkctl
