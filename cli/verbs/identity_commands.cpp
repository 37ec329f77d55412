#include "verbs/identity_commands.h"

#include <functional>
#include <string>

#include <state/fields/json_value.h>
#include <state/reading/read_machine.h>

#include "answer/cell_text.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

using Names = zelk::DesiredIdentity;

void AddShow(Command noun)
{
    Command verb = noun.AddVerb({"show", "Show the names of this machine", "identity show --json"});
    const auto fields = ShownFields<zelk::Identity>();
    verb.AddFormOptions(fields);
    verb.Answers([] { return zelk::ReferenceTo("identity"); },
                 [fields] { return Answer{.value = zelk::ToJson(zelk::ReadMachine().identity), .fields = fields}; });
}

/// A verb whose argument is the new name.
struct NameVerb
{
    CommandHelp help;
    ParameterHelp argument;
    bool bCanBeEmpty;
    std::optional<std::string> Names::*pName;
    const char* pszDone; ///< before the name
};

const NameVerb NAME_VERBS[] = {
    {{"set-name", "Set the computer name, which takes effect at the next start", "identity set-name station7"},
     {"NAME", "The name, without a domain", "NAME"},
     false,
     &Names::computerName,
     "The computer name will be "},
    {{"set-workgroup", "Set the workgroup of this machine", "identity set-workgroup WORKSHOP"},
     {"NAME", "The name of the workgroup", "NAME"},
     false,
     &Names::workgroup,
     "The workgroup is "},
    {{"set-suffix", "Set or clear the primary DNS suffix, which takes effect at the next start",
      "identity set-suffix example.org"},
     {"SUFFIX", "The suffix; without one it is cleared", "DOMAIN"},
     true,
     &Names::primaryDnsSuffix,
     "The primary DNS suffix will be "}};

void AddNameVerb(Command noun, const NameVerb& kind)
{
    Command verb = noun.AddVerb(kind.help);
    const auto name = kind.bCanBeEmpty ? verb.AddOptionalArgument(kind.argument) : verb.AddArgument(kind.argument);
    MakeStateVerb(verb, [&kind, name](const zelk::Machine&) {
        const std::string sName = name();
        StateChange change{.state = {}, .sDone = kind.pszDone + (sName.empty() ? "empty" : Quoted(sName)) + '.'};
        change.state.identity.*kind.pName = sName;
        return change;
    });
}

} // namespace

void AddIdentityCommands(Command tool)
{
    Command noun = tool.AddNoun({"identity", "Names of this machine", "identity show"});
    AddShow(noun);
    for (const NameVerb& kind : NAME_VERBS)
        AddNameVerb(noun, kind);
}

} // namespace zelkctl
