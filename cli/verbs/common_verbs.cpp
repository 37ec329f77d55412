#include "verbs/common_verbs.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <state/fields/json_value.h>
#include <state/reading/read_machine.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "answer/value_text.h"
#include "change/change_schema.h"
#include "parser/ip_argument.h"
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

std::uint32_t ParseSeconds(const std::string& sName, const std::string& sText)
{
    constexpr unsigned long LONGEST = 86400;
    const auto ulSeconds = ParseNumber(sText);
    if (!ulSeconds || *ulSeconds < 1 || *ulSeconds > LONGEST)
        throw UsageError(sName, Quoted(sText) + " is not a number of seconds from 1 to 86400");
    return *ulSeconds;
}

} // namespace

TOLVA::FAMILY_TYPE GivenFamilies::ForLibrary() const
{
    return ipv4() ? TOLVA::FAMILY_IPV4 : ipv6() ? TOLVA::FAMILY_IPV6 : TOLVA::FAMILY_BOTH;
}

std::vector<zelk::Family> GivenFamilies::Of(const zelk::Machine& machine, const zelk::Adapter& adapter) const
{
    if (ipv4())
        return {zelk::Family::IPV4};
    if (ipv6())
        return {zelk::Family::IPV6};
    const bool bHasIpv6 = machine.environment.backEnd == zelk::BackEnd::VISTA && adapter.ipv6.enabled.value_or(false);
    return bHasIpv6 ? std::vector{zelk::Family::IPV4, zelk::Family::IPV6} : std::vector{zelk::Family::IPV4};
}

GivenAdapter AddAdapterArgument(Command verb)
{
    return [adapter = AddAdapterIn(verb)] { return adapter(zelk::ReadMachine({.identity = false})); };
}

AdapterIn AddAdapterIn(Command verb)
{
    const auto wanted =
        verb.AddArgument({ADAPTER_ARGUMENT,
                          "Its name, GUID, index or hardware address; if that is ambiguous, put \"name:\", \"guid:\", "
                          "\"index:\" or \"mac:\" before it",
                          ADAPTER_FORM});
    return [wanted](const zelk::Machine& machine) -> const zelk::Adapter& { return FindAdapter(machine, wanted()); };
}

GivenFamilies AddFamilyFlags(Command verb)
{
    auto [ipv4, ipv6] = verb.AddAlternatives({"--ipv4", "Only IPv4 instead of both families", ""},
                                             {"--ipv6", "Only IPv6 instead of both families", ""});
    return {std::move(ipv4), std::move(ipv6)};
}

GivenFlag AddYesFlag(Command verb)
{
    return verb.AddFlag("--yes", "Confirm a change that can disconnect sessions, without being asked");
}

GivenNumber AddSecondsOption(Command verb, const std::string& sName, const std::string& sDescription)
{
    return [sName, seconds = verb.AddOption({sName, sDescription, "SECONDS"})]() -> std::optional<std::uint32_t> {
        const std::string sText = seconds();
        return sText.empty() ? std::nullopt : std::optional(ParseSeconds(sName, sText));
    };
}

GivenSeconds AddTimeoutOption(Command verb, const std::string& sDescription)
{
    return [timeout = AddSecondsOption(verb, "--timeout", sDescription)] {
        const auto ulSeconds = timeout();
        return ulSeconds ? std::chrono::seconds(*ulSeconds) : StateChangeOptions().timeout;
    };
}

GivenNumber AddMetricOption(Command verb)
{
    return
        [metric = verb.AddOption({"--metric", "The metric, from 1 to 9999", "N"})]() -> std::optional<std::uint32_t> {
            const std::string sText = metric();
            if (sText.empty())
                return std::nullopt;
            const auto ulMetric = ParseNumber(sText);
            if (!ulMetric)
                throw UsageError("--metric", Quoted(sText) + " is not a number");
            return *ulMetric;
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

StateChange ChangeOf(const zelk::Adapter& adapter, zelk::DesiredAdapter desired, std::string sDone)
{
    desired.adapter = adapter.guid ? "guid:" + adapter.guid->ToText() : zelk::NameOf(adapter);
    StateChange change{.state = {}, .sDone = std::move(sDone)};
    change.state.adapters.push_back(std::move(desired));
    return change;
}

void SetDnsServers(const std::vector<zelk::IpAddress>& servers, zelk::DesiredAdapter& desired)
{
    for (const zelk::Family family : zelk::FAMILIES)
    {
        std::vector<zelk::IpAddress> list;
        std::ranges::copy_if(servers, std::back_inserter(list),
                             [=](const zelk::IpAddress& server) { return server.GetFamily() == family; });
        if (!list.empty())
            desired.Of(family).dnsServers = std::move(list);
    }
}

void MakeStateVerb(Command verb, StateChangeOf changeOf)
{
    const auto yes = AddYesFlag(verb);
    verb.Answers(StateChangeSchema, [=, options = AddStateChangeOptions(verb), changeOf = std::move(changeOf)] {
        auto given = options();
        given.bConfirmed = yes();
        return Perform(changeOf, given);
    });
}

std::function<StateChangeOptions()> AddStateChangeOptions(Command verb)
{
    const auto check = verb.AddFlag("--check", "Show what would be changed and how, but change nothing");
    const auto keep = verb.AddFlag("--keep", "Do not undo what was done if a step fails");
    const auto timeout = AddTimeoutOption(verb, "How long each command, and the verification, may take; 60 by default");
    const auto within = AddSecondsOption(verb, "--confirm-within",
                                         "Restore the previous state unless \"zelkctl confirm\" is run in that time");
    const auto label = verb.AddOption({"--label", "Text that \"zelkctl pending\" shows with the change", "TEXT"});
    const auto host = verb.AddOption({"--wait-for", "Confirm as soon as this host answers", "ADDRESS"});
    verb.AddJsonFlag();
    return [=] {
        StateChangeOptions options{
            .bCheck = check(), .bKeep = keep(), .timeout = timeout(), .confirmWithin = within(), .sLabel = label()};
        if (const std::string sHost = host(); !sHost.empty())
            options.waitFor = ParseAddress("--wait-for", sHost);
        if (options.waitFor && !options.confirmWithin)
            throw UsageError("--wait-for", "needs --confirm-within, which says for how long");
        return options;
    };
}

} // namespace zelkctl
