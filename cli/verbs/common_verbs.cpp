#include "verbs/common_verbs.h"

#include <algorithm>
#include <utility>

#include <state/fields/json_value.h>
#include <state/reading/read_machine.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "answer/value_text.h"
#include "records/answer_schema.h"
#include "system/number.h"

namespace zelkctl
{
namespace
{

/// Null where none of the lists is there. A list of texts becomes one of records with an address.
Json CollectedRecords(const Json& adapter, const std::vector<std::string>& keys)
{
    Json records;
    for (const std::string& sKey : keys)
        for (const Json list = ValueOf({sKey, ""}, adapter); const Json& item : list)
            records.push_back(item.is_object() ? item : Json{{"address", item}});
    return records;
}

bool HasAny(const Json& adapter, const std::vector<std::string>& keys)
{
    return std::ranges::any_of(keys, [&](const std::string& sKey) { return !ValueOf({sKey, ""}, adapter).is_null(); });
}

Failure NotReadable(const zelk::Adapter& adapter)
{
    std::string sReason = "this could not be read";
    for (const zelk::Problem& problem : adapter.problems)
        sReason += "; " + TextOf(zelk::ToJson(problem));
    return Failure({.sReason = sReason, .sOperation = "ReadMachine", .sAdapter = zelk::NameOf(adapter)});
}

std::chrono::seconds ParseTimeout(const std::string& sText)
{
    constexpr unsigned long LONGEST = 86400;
    if (sText.empty())
        return StateChangeOptions().timeout;
    const auto ulSeconds = ParseNumber(sText);
    if (!ulSeconds || *ulSeconds < 1 || *ulSeconds > LONGEST)
        throw UsageError("--timeout", Quoted(sText) + " is not a number of seconds from 1 to 86400");
    return std::chrono::seconds(*ulSeconds);
}

} // namespace

GivenAdapter AddAdapterArgument(Command verb)
{
    const auto wanted = verb.AddArgument({ADAPTER_ARGUMENT,
                                          "Its name, GUID, index or hardware address; if that is ambiguous, put "
                                          "\"name:\", \"guid:\", \"index:\" or \"mac:\" before it",
                                          ADAPTER_FORM});
    return [wanted] { return FindAdapter(zelk::ReadMachine({.identity = false}), wanted()); };
}

GivenFamily AddFamilyFlags(Command verb)
{
    const auto [ipv4, ipv6] = verb.AddAlternatives({"--ipv4", "Only IPv4 instead of both families", ""},
                                                   {"--ipv6", "Only IPv6 instead of both families", ""});
    return [ipv4 = ipv4, ipv6 = ipv6] {
        return ipv4() ? TOLVA::FAMILY_IPV4 : ipv6() ? TOLVA::FAMILY_IPV6 : TOLVA::FAMILY_BOTH;
    };
}

Command AddAdapterPartVerb(Command noun, const CommandHelp& help, const std::vector<std::string>& keys)
{
    Command verb = noun.AddVerb(help);
    const auto fields = Only(keys, ShownFields<zelk::Adapter>());
    verb.AddFormOptions(fields);
    verb.Answers([] { return zelk::ReferenceTo("adapter"); },
                 [fields, adapter = AddAdapterArgument(verb)] {
                     return Answer{.value = zelk::ToJson(adapter()), .fields = fields};
                 });
    return verb;
}

Command AddAdapterListVerb(Command noun, const ListVerb& list)
{
    Command verb = noun.AddVerb(list.help);
    verb.AddFormOptions(list.fields);
    verb.AddColumnOptions(list.fields);
    verb.Answers([list] { return ListOf(list.pszRecord); },
                 [list, given = AddAdapterArgument(verb)] {
                     const zelk::Adapter adapter = given();
                     const Json record = zelk::ToJson(adapter);
                     if (!HasAny(record, list.keys))
                         throw NotReadable(adapter);
                     return Answer{
                         .value = CollectedRecords(record, list.keys), .fields = list.fields, .sWhenEmpty = list.sNone};
                 });
    return verb;
}

void MakeChangeVerb(Command verb, std::function<Change()> plan)
{
    verb.Answers(ChangeSchema, AddChange(verb, std::move(plan)));
}

std::function<Answer()> AddChange(Command verb, std::function<Change()> plan)
{
    const auto check = verb.AddFlag("--check", "Show the state before and after, but change nothing");
    const auto noVerify = verb.AddFlag("--no-verify", "Do not verify that the machine shows the change");
    const auto yes = verb.AddFlag("--yes", "Confirm a change that can disconnect sessions, without being asked");
    verb.AddJsonFlag();
    return [=, plan = std::move(plan)] {
        return Perform(plan(), {.bCheck = check(), .bVerify = !noVerify(), .bConfirmed = yes()});
    };
}

std::function<StateChangeOptions()> AddStateChangeOptions(Command verb)
{
    const auto check = verb.AddFlag("--check", "Show what would be changed and how, but change nothing");
    const auto keep = verb.AddFlag("--keep", "Do not undo what was done if a step fails");
    const auto timeout = verb.AddOption(
        {"--timeout", "How long each command, and the verification, may take; 60 by default", "SECONDS"});
    verb.AddJsonFlag();
    return [=] { return StateChangeOptions{.bCheck = check(), .bKeep = keep(), .timeout = ParseTimeout(timeout())}; };
}

Aspect ItemBecomes(const zelk::Adapter& adapter, const std::string& sKey, Json wanted)
{
    const Field field = Only({sKey}, ShownFields<zelk::Adapter>()).front();
    return AdapterAspect(
        adapter, sKey, field.sLabel, [field](const zelk::Adapter& now) { return ValueOf(field, zelk::ToJson(now)); },
        std::move(wanted));
}

} // namespace zelkctl
