#include "identity_commands.h"

#include <algorithm>
#include <cctype>
#include <string>

#include <zelk_nm/tolva.h>

#include "command.h"
#include "json_value.h"
#include "library_call.h"
#include "text.h"

namespace zelkctl
{
namespace
{

constexpr Field FIELDS[] = {{"computerName", "Computer name"},
                            {"fullComputerName", "Full computer name"},
                            {"primaryDnsSuffix", "Primary DNS suffix"},
                            {"workgroup", "Workgroup"}};

constexpr const char* AT_NEXT_START = "It takes effect at the system's next start.";

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

void SetName(const std::string& sName)
{
    if (!IsHostName(sName))
        throw CLI::ValidationError("NAME", Quoted(sName) + " is no computer name: 1 to 63 letters, digits and \"-\"");
    Call("SetComputerNameW", [&] { return TOLVA::SetComputerNameW(FromUtf8(sName)); });
    Output::Note("The computer name will be " + Quoted(sName) + ". " + AT_NEXT_START);
}

void SetWorkgroup(const std::string& sName)
{
    if (sName.empty())
        throw CLI::ValidationError("NAME", "a workgroup needs a name");
    Change("SetWorkgroupName", {"Setting the workgroup", "The workgroup is " + Quoted(sName) + '.'},
           [&] { return TOLVA::SetWorkgroupName(FromUtf8(sName)); });
}

void SetSuffix(const std::string& sSuffix)
{
    Call("SetPrimaryDnsSuffix", [&] { return TOLVA::SetPrimaryDnsSuffix(FromUtf8(sSuffix)); });
    const std::string sChange = sSuffix.empty() ? "be cleared" : "be " + Quoted(sSuffix);
    Output::Note("The primary DNS suffix will " + sChange + ". " + AT_NEXT_START);
}

void AddShow(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, "show", "Show the machine's names", "identity show --json");
    AddJsonFlag(verb, output);
    verb.callback([&output] { output.Record(FIELDS, ReadIdentity()); });
}

void AddSetName(CLI::App& noun)
{
    CLI::App& verb = AddVerb(noun, "set-name", "Give the machine another name", "identity set-name station7");
    AddRemark(verb, AT_NEXT_START);
    const CLI::Option& name = AddArgument(verb, "NAME", "The name, without a domain", "NAME");
    verb.callback([&name] { SetName(name.as<std::string>()); });
}

void AddSetWorkgroup(CLI::App& noun)
{
    CLI::App& verb =
        AddVerb(noun, "set-workgroup", "Put the machine into another workgroup", "identity set-workgroup WORKSHOP");
    const CLI::Option& name = AddArgument(verb, "NAME", "The workgroup's name", "NAME");
    verb.callback([&name] { SetWorkgroup(name.as<std::string>()); });
}

void AddSetSuffix(CLI::App& noun)
{
    CLI::App& verb = AddVerb(noun, "set-suffix", "Give the machine another primary DNS suffix, or none",
                             "identity set-suffix example.org");
    AddRemark(verb, AT_NEXT_START);
    const CLI::Option& suffix =
        *AddArgument(verb, "SUFFIX", "The suffix; without one it is cleared", "DOMAIN").required(false);
    verb.callback([&suffix] { SetSuffix(suffix.count() > 0 ? suffix.as<std::string>() : std::string()); });
}

} // namespace

void AddIdentityCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, "identity", "Names of this machine", "identity show");
    AddShow(noun, output);
    AddSetName(noun);
    AddSetWorkgroup(noun);
    AddSetSuffix(noun);
}

} // namespace zelkctl
