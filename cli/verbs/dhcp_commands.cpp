#include "verbs/dhcp_commands.h"

#include <string>
#include <vector>

#include "verbs/address_aspects.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

/// A verb that changes the leases of one family or both.
struct LeaseVerb
{
    CommandHelp help;
    const char* pszOperation;
    bool (*pOperation)(const TOLVA::NIC_INFO&, TOLVA::FAMILY_TYPE);
    const char* pszDoing;
    const char* pszDone;
    std::vector<Aspect> (*pAspects)(const zelk::Adapter&, TOLVA::FAMILY_TYPE);
    Reach reach;
};

/// The server may offer something else, or nothing: whatever can be read of IPv6 will do.
Aspect Ipv6Identity(const zelk::Adapter& adapter)
{
    Aspect aspect = ItemBecomes(adapter, "ipv6.dhcpDuid", {});
    aspect.isReached = [](const Json&) { return true; };
    return aspect;
}

std::vector<Aspect> LeaseAspects(const zelk::Adapter& adapter, TOLVA::FAMILY_TYPE enFamily, bool bLeased)
{
    std::vector<Aspect> aspects;
    if (HasIpv4(enFamily))
        aspects.push_back(LeasedIpv4Addresses(adapter, bLeased));
    if (HasIpv6(enFamily))
        aspects.push_back(Ipv6Identity(adapter));
    return aspects;
}

std::vector<Aspect> Renewed(const zelk::Adapter& adapter, TOLVA::FAMILY_TYPE enFamily)
{
    return LeaseAspects(adapter, enFamily, true);
}

std::vector<Aspect> Released(const zelk::Adapter& adapter, TOLVA::FAMILY_TYPE enFamily)
{
    return LeaseAspects(adapter, enFamily, false);
}

/// Of IPv6 the library keeps no setting: an adapter without static addresses asks by itself.
std::vector<Aspect> Returned(const zelk::Adapter& adapter, TOLVA::FAMILY_TYPE enFamily)
{
    std::vector<Aspect> aspects;
    if (HasIpv4(enFamily))
    {
        aspects.push_back(ItemBecomes(adapter, "ipv4.configured.dhcp", true));
        aspects.push_back(NoStaticAddresses(adapter, zelk::Family::IPV4));
    }
    if (HasIpv6(enFamily))
        aspects.push_back(NoStaticAddresses(adapter, zelk::Family::IPV6));
    return aspects;
}

const LeaseVerb LEASE_VERBS[] = {
    {{"renew", "Renew the DHCP lease of one adapter", "dhcp renew lan0 --ipv4"},
     "RenewDhcp",
     &TOLVA::RenewDhcp,
     "Renewing the lease",
     " has renewed its lease",
     Renewed,
     Reach::SETTINGS},
    {{"release", "Release the DHCP lease of one adapter", "dhcp release lan0 --ipv4 --yes"},
     "ReleaseDhcp",
     &TOLVA::ReleaseDhcp,
     "Releasing the lease",
     " has released its lease",
     Released,
     Reach::SESSION},
    {{"return", "Replace static addresses of one adapter by DHCP: removes them, restarts it and renews the lease",
      "dhcp return lan0 --ipv4 --yes"},
     "ReturnToDhcp",
     &TOLVA::ReturnToDhcp,
     "Returning to DHCP",
     " uses DHCP",
     Returned,
     Reach::SESSION}};

Change ChangeLease(const LeaseVerb& verb, const zelk::Adapter& adapter, TOLVA::FAMILY_TYPE enFamily)
{
    const std::string sFamilies = std::string(" (") + FamilyText(enFamily) + ')';
    return {.sOperation = verb.pszOperation,
            .adapter = adapter,
            .sDoing = verb.pszDoing + sFamilies,
            .sDone = "Adapter " + Quoted(adapter) + verb.pszDone + sFamilies + '.',
            .aspects = verb.pAspects(adapter, enFamily),
            .operation = [=, info = NicInfoOf(adapter)] { return verb.pOperation(info, enFamily); },
            .reach = verb.reach,
            .bNeedsIpv6 = enFamily == TOLVA::FAMILY_IPV6};
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
    {
        Command verb = noun.AddVerb(lease.help);
        MakeChangeVerb(verb, [&lease, adapter = AddAdapterArgument(verb), family = AddFamilyFlags(verb)] {
            return ChangeLease(lease, adapter(), family());
        });
    }
}

} // namespace zelkctl
