#include "dhcp_commands.h"

#include <string>

#include <zelk_nm/tolva.h>

#include "adapter.h"
#include "command.h"
#include "dhcp_record.h"
#include "library_call.h"

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
};

void ChangeLease(const LeaseVerb& change, const Adapter& adapter, TOLVA::FAMILY_TYPE enFamily)
{
    const std::string sFamilies = std::string(" (") + FamilyText(enFamily) + ')';
    Change(change.pszOperation,
           {change.pszDoing + sFamilies, "Adapter " + Quoted(adapter) + change.pszDone + sFamilies + '.'},
           [&] { return change.pOperation(adapter.info, enFamily); });
}

CLI::App& AddLeaseVerb(CLI::App& noun, const LeaseVerb& change)
{
    CLI::App& verb = AddVerb(noun, change.sName, change.pszDescription, "dhcp " + change.sName + " lan0 --ipv4");
    RunForFamilies(verb, [change](const Adapter& adapter, TOLVA::FAMILY_TYPE enFamily) {
        ChangeLease(change, adapter, enFamily);
    });
    return verb;
}

void AddStatus(CLI::App& noun, Output& output)
{
    CLI::App& verb =
        AddVerb(noun, "status", "Show whether one adapter is a DHCP client, and of whom", "dhcp status lan0 --json");
    AddJsonFlag(verb, output);
    RunForFamilies(verb, [&output](const Adapter& adapter, TOLVA::FAMILY_TYPE enFamily) {
        output.Record(DhcpFields(enFamily), DhcpOf(adapter.info, enFamily));
    });
}

} // namespace

void AddDhcpCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, "dhcp", "The DHCP client of an adapter", "dhcp status lan0");
    AddStatus(noun, output);
    AddLeaseVerb(noun, {"renew", "Renew the lease of one adapter", "RenewDhcp", &TOLVA::RenewDhcp, "Renewing the lease",
                        " renewed its lease"});
    AddLeaseVerb(noun, {"release", "Give the lease of one adapter back", "ReleaseDhcp", &TOLVA::ReleaseDhcp,
                        "Releasing the lease", " released its lease"});
    CLI::App& back =
        AddLeaseVerb(noun, {"return", "Make an adapter with static addresses a DHCP client again", "ReturnToDhcp",
                            &TOLVA::ReturnToDhcp, "Returning to DHCP", " is a DHCP client"});
    AddRemark(back, "It removes the addresses, restarts the device and renews the lease.");
}

} // namespace zelkctl
