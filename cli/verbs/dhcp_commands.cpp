#include "verbs/dhcp_commands.h"

#include <algorithm>
#include <string>
#include <utility>

#include <state/apply/apply.h>
#include <state/apply/command_limit.h>
#include <state/apply/look_schedule.h>
#include <state/desired/machine_names.h>
#include <state/fields/json_value.h>
#include <state/reading/read_machine.h>

#include "adapters/library_call.h"
#include "change/permission.h"
#include "records/answer_schema.h"
#include "system/command_search.h"
#include "system/interrupt.h"
#include "system/progress.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

/// A verb that has the DHCP client do something now. Nothing is configured otherwise afterwards.
struct LeaseVerb
{
    CommandHelp help;
    const char* pszOperation;
    bool (*pOperation)(const TOLVA::NIC_INFO&, TOLVA::FAMILY_TYPE);
    const char* pszDoing;
    const char* pszDone;
    bool bLeased; ///< whether the adapter has a leased IPv4 address afterwards
};

const LeaseVerb LEASE_VERBS[] = {
    {{"renew", "Renew the DHCP lease of one adapter", "dhcp renew lan0 --ipv4"},
     "RenewDhcp",
     &TOLVA::RenewDhcp,
     "Renewing the lease",
     " has renewed its lease.",
     true},
    {{"release", "Release the DHCP lease of one adapter", "dhcp release lan0 --ipv4 --yes"},
     "ReleaseDhcp",
     &TOLVA::ReleaseDhcp,
     "Releasing the lease",
     " has released its lease.",
     false}};

bool HasLeasedAddress(const zelk::Adapter& adapter)
{
    const auto& addresses = adapter.ipv4.addresses;
    return addresses && std::ranges::any_of(*addresses, [](const zelk::Address& address) {
               return address.origin == zelk::AddressOrigin::DHCP && !address.address.IsLinkLocal();
           });
}

/// Reads the machine until the adapter has a lease or none, or the time is over: how it stands then.
std::pair<bool, Json> AwaitLease(const zelk::Adapter& adapter, bool bLeased, std::chrono::seconds timeout)
{
    const ProgressDisplay progress("Verifying");
    zelk::LookSchedule schedule(zelk::ApplyOptions().lookInterval, timeout);
    for (;;)
    {
        const zelk::Machine machine = zelk::ReadMachine({.identity = false});
        const zelk::Adapter* const pNow = SameAdapter(machine, adapter);
        const bool bReached = pNow != nullptr && HasLeasedAddress(*pNow) == bLeased;
        if (bReached || schedule.IsOver())
            return {bReached, pNow != nullptr ? zelk::ToJson(*pNow) : Json()};
        schedule.AwaitNext();
    }
}

/// The library starts ipconfig by its name, through the interpreter, and waits for it without an end.
void RunLibrary(const LeaseVerb& verb, const zelk::Adapter& adapter, TOLVA::FAMILY_TYPE enFamily,
                std::chrono::seconds timeout, const TraceReader& trace)
{
    if (const std::string sReason = zelk::RefuseInInterpreter(adapter.connectionName.value_or("")); !sReason.empty())
        throw Failure({.code = EXIT_NOT_POSSIBLE, .sReason = sReason, .sAdapter = zelk::NameOf(adapter)});
    const ProgressDisplay progress(verb.pszDoing);
    const InterruptGuard guard;
    SearchSystemDirectoryFirst();
    const zelk::CommandLimit limit(timeout, &InterruptGuard::IsInterrupted);
    const bool bDone = verb.pOperation(NicInfoOf(adapter), enFamily);
    if (!bDone && limit.IsOver())
        throw Failure({.code = EXIT_TIME_OVER,
                       .sReason = "ipconfig did not end in time and was ended",
                       .sOperation = verb.pszOperation,
                       .sAdapter = zelk::NameOf(adapter)});
    if (!bDone)
        throw OperationFailed(verb.pszOperation, &adapter, trace, enFamily == TOLVA::FAMILY_IPV6);
}

Answer ChangeLease(const LeaseVerb& verb, const zelk::Adapter& adapter, TOLVA::FAMILY_TYPE enFamily,
                   std::chrono::seconds timeout)
{
    const TraceReader trace;
    RunLibrary(verb, adapter, enFamily, timeout, trace);
    const std::string sSurvived = trace.Problems().empty() ? "" : Explanation(trace);
    // Of IPv6 nothing tells a lease: the router's addresses look the same.
    auto [bVerified, now] = enFamily == TOLVA::FAMILY_IPV6 ? std::pair(false, zelk::ToJson(adapter))
                                                           : AwaitLease(adapter, verb.bLeased, timeout);
    Answer answer{.value = {{"done", true},
                            {"verified", bVerified},
                            {"wentOnAfter", sSurvived.empty() ? Json() : Json(sSurvived)},
                            {"adapter", std::move(now)}},
                  .text = ""};
    if (!bVerified && enFamily != TOLVA::FAMILY_IPV6)
    {
        answer.code = EXIT_NOT_VERIFIED;
        answer.notes = {"The library reported success, but adapter " + Quoted(adapter) +
                        (verb.bLeased ? " has no leased IPv4 address." : " still has a leased IPv4 address.")};
    }
    else
        answer.notes = {"Adapter " + Quoted(adapter) + verb.pszDone};
    if (!sSurvived.empty())
        answer.notes.push_back("The library reported a problem on the way: " + sSurvived);
    return answer;
}

Json LeaseSchema()
{
    const Json boolean = zelk::SchemaOfType("boolean");
    return ObjectOf({{"done", boolean},
                     {"verified", boolean},
                     {"wentOnAfter", zelk::OrNull(zelk::SchemaOfType("string"))},
                     {"adapter", zelk::OrNull(zelk::ReferenceTo("adapter"))}});
}

void AddLeaseVerb(Command noun, const LeaseVerb& lease)
{
    Command verb = noun.AddVerb(lease.help);
    const auto adapter = AddAdapterArgument(verb);
    const auto families = AddFamilyFlags(verb);
    const auto yes = lease.bLeased ? GivenFlag([] { return true; }) : AddYesFlag(verb);
    const auto timeout = AddTimeoutOption(verb, "How long to wait until the adapter shows it; 60 by default");
    verb.AddJsonFlag();
    verb.Answers(LeaseSchema, [=, &lease] {
        const auto limit = timeout();
        const zelk::Adapter found = adapter();
        RequireElevation(zelk::NameOf(found));
        RequireConfirmation(zelk::NameOf(found), yes());
        return ChangeLease(lease, found, families.ForLibrary(), limit);
    });
}

void AddReturn(Command noun)
{
    Command verb =
        noun.AddVerb({"return", "Return one adapter to DHCP and automatic addresses", "dhcp return lan0 --ipv4 --yes"});
    verb.AddRemark("Static addresses, default gateways and DNS servers are removed.");
    const auto adapter = AddAdapterIn(verb);
    const auto families = AddFamilyFlags(verb);
    const auto keepDns = verb.AddFlag("--keep-dns", "Keep the static DNS servers");
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        const zelk::Adapter& found = adapter(machine);
        zelk::DesiredAdapter desired;
        for (const zelk::Family family : families.Of(machine, found))
        {
            zelk::DesiredIp& ip = desired.Of(family);
            if (family == zelk::Family::IPV4)
                ip.dhcp = true;
            else
                ip.addresses.emplace();
            ip.gateways.emplace();
            if (!keepDns())
                ip.dnsServers = zelk::Automatic();
        }
        StateChange change =
            ChangeOf(found, std::move(desired), "Adapter " + Quoted(found) + " uses DHCP and automatic addresses.");
        change.bCanDisconnect = true;
        return change;
    });
}

} // namespace

void AddDhcpCommands(Command tool)
{
    Command noun = tool.AddNoun({"dhcp", "The DHCP client of an adapter", "dhcp status lan0"});
    AddAdapterPartVerb(noun, {"status", "Show whether one adapter uses DHCP, and its lease", "dhcp status lan0 --json"},
                       {"ipv4.dhcp", "ipv4.configured.dhcp", "ipv4.lease.address", "ipv4.lease.server",
                        "ipv4.lease.obtained", "ipv4.lease.expires", "ipv4.autoconfiguration", "ipv6.dhcp",
                        "ipv6.dhcpIaid", "ipv6.dhcpDuid"});
    for (const LeaseVerb& lease : LEASE_VERBS)
        AddLeaseVerb(noun, lease);
    AddReturn(noun);
}

} // namespace zelkctl
