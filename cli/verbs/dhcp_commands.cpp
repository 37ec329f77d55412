#include "verbs/dhcp_commands.h"

#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

#include "adapters/adapter.h"
#include "answer/json_value.h"
#include "parser/command.h"
#include "records/address_record.h"
#include "records/dhcp_record.h"
#include "records/family.h"

namespace zelkctl
{
namespace
{

/// A verb that changes the leases of one family or both.
struct LeaseVerb
{
    std::string sName;
    const char* pszDescription;
    const char* pszOperation;
    bool (*pOperation)(const TOLVA::NIC_INFO&, TOLVA::FAMILY_TYPE);
    const char* pszDoing;
    const char* pszDone;
    std::vector<Aspect> (*pAspects)(const TOLVA::NIC_INFO&, TOLVA::FAMILY_TYPE);
    Reach reach;
};

/// The server may offer something else, or nothing: whatever can be read of IPv6 will do.
Aspect Ipv6Identity(const TOLVA::NIC_INFO& info)
{
    return {.field = {"dhcpv6Duid", "DHCPv6 DUID"},
            .read = [info] { return DhcpOf(info, TOLVA::FAMILY_IPV6).at("dhcpv6Duid"); },
            .wanted = {},
            .isReached = [](const Json&) { return true; }};
}

std::vector<Aspect> Renewed(const TOLVA::NIC_INFO& info, TOLVA::FAMILY_TYPE enFamily)
{
    std::vector<Aspect> aspects;
    if (HasIpv4(enFamily))
        aspects.push_back(LeasedIpv4Addresses(info, true));
    if (HasIpv6(enFamily))
        aspects.push_back(Ipv6Identity(info));
    return aspects;
}

std::vector<Aspect> Released(const TOLVA::NIC_INFO& info, TOLVA::FAMILY_TYPE enFamily)
{
    std::vector<Aspect> aspects;
    if (HasIpv4(enFamily))
        aspects.push_back(LeasedIpv4Addresses(info, false));
    if (HasIpv6(enFamily))
        aspects.push_back(Ipv6Identity(info));
    return aspects;
}

/// Of IPv6 the library keeps no setting: an adapter without static addresses asks by itself.
std::vector<Aspect> Returned(const TOLVA::NIC_INFO& info, TOLVA::FAMILY_TYPE enFamily)
{
    std::vector<Aspect> aspects;
    if (HasIpv4(enFamily))
    {
        aspects.push_back({.field = {"dhcpv4Enabled", "DHCPv4 enabled"},
                           .read = [info] { return AnswerOrNull(&TOLVA::IsDhcpEnabled, info, TOLVA::FAMILY_IPV4); },
                           .wanted = true});
        aspects.push_back(NoStaticAddresses(info, TOLVA::FAMILY_IPV4));
    }
    if (HasIpv6(enFamily))
        aspects.push_back(NoStaticAddresses(info, TOLVA::FAMILY_IPV6));
    return aspects;
}

Change ChangeLease(const LeaseVerb& verb, const Adapter& adapter, TOLVA::FAMILY_TYPE enFamily)
{
    const std::string sFamilies = std::string(" (") + FamilyText(enFamily) + ')';
    return {.sOperation = verb.pszOperation,
            .adapter = adapter,
            .sDoing = verb.pszDoing + sFamilies,
            .sDone = "Adapter " + Quoted(adapter) + verb.pszDone + sFamilies + '.',
            .aspects = verb.pAspects(adapter.info, enFamily),
            .operation = [=] { return verb.pOperation(adapter.info, enFamily); },
            .reach = verb.reach,
            .bNeedsIpv6 = enFamily == TOLVA::FAMILY_IPV6};
}

CLI::App& AddLeaseVerb(CLI::App& noun, Output& output, const LeaseVerb& lease)
{
    CLI::App& verb = AddVerb(noun, {lease.sName, lease.pszDescription, "dhcp " + lease.sName + " lan0 --ipv4"});
    RunChange(verb, output, [lease, adapter = AddAdapterArgument(verb), family = AddFamilyFlags(verb)] {
        return ChangeLease(lease, adapter(), family());
    });
    return verb;
}

void AddStatus(CLI::App& noun, Output& output)
{
    CLI::App& verb =
        AddVerb(noun, {"status", "Show whether one adapter is a DHCP client, and of whom", "dhcp status lan0 --json"});
    AddFormFlags(verb, output, DhcpFields(TOLVA::FAMILY_BOTH));
    Run(verb, [&output, adapter = AddAdapterArgument(verb), family = AddFamilyFlags(verb)] {
        output.Record(DhcpFields(family()), DhcpOf(adapter().info, family()));
    });
}

} // namespace

void AddDhcpCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, {"dhcp", "The DHCP client of an adapter", "dhcp status lan0"});
    AddStatus(noun, output);
    AddLeaseVerb(noun, output,
                 {"renew", "Renew the lease of one adapter", "RenewDhcp", &TOLVA::RenewDhcp, "Renewing the lease",
                  " renewed its lease", Renewed, Reach::SETTINGS});
    AddLeaseVerb(noun, output,
                 {"release", "Give the lease of one adapter back", "ReleaseDhcp", &TOLVA::ReleaseDhcp,
                  "Releasing the lease", " released its lease", Released, Reach::SESSION});
    CLI::App& back =
        AddLeaseVerb(noun, output,
                     {"return", "Make an adapter with static addresses a DHCP client again", "ReturnToDhcp",
                      &TOLVA::ReturnToDhcp, "Returning to DHCP", " is a DHCP client", Returned, Reach::SESSION});
    AddRemark(back, "It removes the addresses, restarts the device and renews the lease.");
}

} // namespace zelkctl
