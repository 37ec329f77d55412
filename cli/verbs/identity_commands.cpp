#include "verbs/identity_commands.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <sstream>
#include <string>

#include <zelk_nm/tolva.h>

#include "answer/json_value.h"
#include "parser/command.h"
#include "system/text.h"

namespace zelkctl
{
namespace
{

constexpr Field COMPUTER_NAME = {"computerName", "Computer name"};
constexpr Field DNS_SUFFIX = {"primaryDnsSuffix", "Primary DNS suffix"};
constexpr Field WORKGROUP = {"workgroup", "Workgroup"};
constexpr Field FIELDS[] = {COMPUTER_NAME, {"fullComputerName", "Full computer name"}, DNS_SUFFIX, WORKGROUP};

Json NameOrNull(bool (*pQuery)(velmor::string&))
{
    velmor::string sName;
    return pQuery(sName) ? TextOrNull(sName) : Json();
}

Json ReadIdentity()
{
    Json record;
    record["computerName"] = NameOrNull(&TOLVA::GetComputerNameW);
    record["fullComputerName"] = NameOrNull(&TOLVA::GetFullComputerName);
    record["primaryDnsSuffix"] = NameOrNull(&TOLVA::GetPrimaryDnsSuffix);
    record["workgroup"] = NameOrNull(&TOLVA::GetWorkgroupName);
    return record;
}

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

/// One of the machine's names, as what a change alters. Unlike in a record, none is an empty text.
Aspect NameBecomes(const Field& field, bool (*pQuery)(velmor::string&), const std::string& sWanted)
{
    return {.field = field,
            .read =
                [pQuery] {
                    velmor::string sName;
                    return pQuery(sName) ? Json(ToUtf8(sName)) : Json();
                },
            .wanted = sWanted};
}

Change SetName(const std::string& sName)
{
    if (!IsHostName(sName))
        throw WrongUse("NAME", Quoted(sName) + " is no computer name: 1 to 63 letters, digits and \"-\"");
    return {.sOperation = "SetComputerNameW",
            .sDoing = "Setting the computer name",
            .sDone = "The computer name will be " + Quoted(sName) + '.',
            .aspects = {NameBecomes(COMPUTER_NAME, &TOLVA::GetComputerNameW, sName)},
            .operation = [sName] { return TOLVA::SetComputerNameW(FromUtf8(sName)); },
            .reach = Reach::NEXT_START};
}

Change SetWorkgroup(const std::string& sName)
{
    if (sName.empty())
        throw WrongUse("NAME", "a workgroup needs a name");
    return {.sOperation = "SetWorkgroupName",
            .sDoing = "Setting the workgroup",
            .sDone = "The workgroup is " + Quoted(sName) + '.',
            .aspects = {NameBecomes(WORKGROUP, &TOLVA::GetWorkgroupName, sName)},
            .operation = [sName] { return TOLVA::SetWorkgroupName(FromUtf8(sName)); }};
}

Change SetSuffix(const std::string& sSuffix)
{
    if (!sSuffix.empty() && !IsDomainName(sSuffix))
        throw WrongUse("SUFFIX", Quoted(sSuffix) + " is no DNS domain");
    return {.sOperation = "SetPrimaryDnsSuffix",
            .sDoing = "Setting the primary DNS suffix",
            .sDone = "The primary DNS suffix will be " + (sSuffix.empty() ? "cleared" : Quoted(sSuffix)) + '.',
            .aspects = {NameBecomes(DNS_SUFFIX, &TOLVA::GetPrimaryDnsSuffix, sSuffix)},
            .operation = [sSuffix] { return TOLVA::SetPrimaryDnsSuffix(FromUtf8(sSuffix)); },
            .reach = Reach::NEXT_START};
}

void AddShow(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, {"show", "Show the machine's names", "identity show --json"});
    AddFormFlags(verb, output, FIELDS);
    Run(verb, [&output] { output.Record(FIELDS, ReadIdentity()); });
}

/// A verb whose argument is the new name.
void AddSetVerb(CLI::App& noun, Output& output, const VerbTexts& texts, const std::function<Text(CLI::App&)>& add,
                Change (*pPlan)(const std::string&))
{
    CLI::App& verb = AddVerb(noun, texts);
    RunChange(verb, output, [name = add(verb), pPlan] { return pPlan(name()); });
}

} // namespace

void AddIdentityCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, {"identity", "Names of this machine", "identity show"});
    AddShow(noun, output);
    AddSetVerb(
        noun, output,
        {"set-name", "Give the machine another name, from its next start on", "identity set-name station7"},
        [](CLI::App& verb) { return AddArgument(verb, "NAME", "The name, without a domain", "NAME"); }, SetName);
    AddSetVerb(
        noun, output, {"set-workgroup", "Put the machine into another workgroup", "identity set-workgroup WORKSHOP"},
        [](CLI::App& verb) { return AddArgument(verb, "NAME", "The workgroup's name", "NAME"); }, SetWorkgroup);
    AddSetVerb(
        noun, output,
        {"set-suffix", "Give the machine another primary DNS suffix, or none, from its next start on",
         "identity set-suffix example.org"},
        [](CLI::App& verb) {
            return AddOptionalArgument(verb, "SUFFIX", "The suffix; without one it is cleared", "DOMAIN");
        },
        SetSuffix);
}

} // namespace zelkctl
