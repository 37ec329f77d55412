#include <ipconfig/remove_addresses.h>
#include <support/operation/adapter_operation.h>
#include <support/operation/family.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

namespace
{

using AddressList = std::vector<TOLVA::ASSOC_IP_ADDR>;

/// Which families the list has addresses of. False when it has of none.
bool FindFamily(const CallFrame& frame, const AddressList& IpAddrs, TOLVA::FAMILY_TYPE& enFamilyType)
{
    bool bIpv4 = false;
    bool bIpv6 = false;
    for (const TOLVA::ASSOC_IP_ADDR& IpAddr : IpAddrs)
    {
        const velmor::ip_address& address = IpAddr.IpAddress;
        if (address.is_ipv4())
            frame.Verbose("Found IPv4 address", "sCurrentIpAddress", address);
        else if (address.is_ipv6())
            frame.Verbose("Found IPv6 address", "sCurrentIpAddress", address);
        bIpv4 |= address.is_ipv4();
        bIpv6 |= address.is_ipv6();
    }
    if (!bIpv4 && !bIpv6)
        return frame.Fail("No IPv4 or IPv6 addresses in the supplied list");
    enFamilyType = bIpv4 && bIpv6 ? TOLVA::FAMILY_BOTH : bIpv4 ? TOLVA::FAMILY_IPV4 : TOLVA::FAMILY_IPV6;
    return true;
}

/// A lease that cannot be released, or not be asked about, does not stop the change.
void ReleaseLeases(const CallFrame& frame, const TOLVA::NIC_INFO& NicInfo, TOLVA::FAMILY_TYPE enFamilyType)
{
    bool bDhcpEnabled = false;
    if (!TOLVA::IsDhcpEnabled(NicInfo, enFamilyType, bDhcpEnabled))
        frame.Warning("TOLVA::IsDhcpEnabled failed");
    else if (bDhcpEnabled && !TOLVA::ReleaseDhcp(NicInfo, enFamilyType))
        frame.Warning("TOLVA::ReleaseDhcp failed");
}

/// Adds all by `add`, those of neither family too, and goes on after a refusal. True when none was refused.
template <class Add>
bool AddAddresses(const CallFrame& frame, const AddressList& IpAddrs, Add&& add)
{
    bool bAllAdded = true;
    for (const TOLVA::ASSOC_IP_ADDR& IpAddr : IpAddrs)
    {
        if (add(IpAddr))
            frame.Information("Added", "sCurrentIpAddress", IpAddr.IpAddress);
        else
        {
            frame.Error("AddIpAddr failed", "sCurrentIpAddress", IpAddr.IpAddress);
            bAllAdded = false;
        }
    }
    return bAllAdded;
}

} // namespace

bool TOLVA::SetAdaptersIpAddrs(const NIC_INFO& NicInfo, const std::vector<ASSOC_IP_ADDR>& IpAddrs)
{
    return RunOnAdapter("TOLVA::SetAdaptersIpAddrs", NicInfo, [&](const CallFrame& frame) {
        FAMILY_TYPE enFamilyType = FAMILY_BOTH;
        if (!FindFamily(frame, IpAddrs, enFamilyType))
            return false;
        ReleaseLeases(frame, NicInfo, enFamilyType);

        std::vector<ASSOC_IP_ADDR> CurrentIpAddrs;
        if (!GetAdaptersIpAddrs(NicInfo, CurrentIpAddrs))
            return frame.Fail("TOLVA::GetAdaptersIpAddrs failed");
        // The log's contract: this operation tells of removed IPv6 addresses alone, ReturnToDhcp of both families'.
        if (!RemoveAddresses(frame, enFamilyType, CurrentIpAddrs, TraceRemoved::Ipv6Only,
                             [&](const ASSOC_IP_ADDR& IpAddr) { return DeleteIpAddr(NicInfo, IpAddr); }))
        {
            // The refusals were traced as errors; this end is told at verbose level only.
            frame.Verbose("... ending(One or more current IP addresses could not be removed)");
            return false;
        }
        if (!AddAddresses(frame, IpAddrs, [&](const ASSOC_IP_ADDR& IpAddr) { return AddIpAddr(NicInfo, IpAddr); }))
            return frame.Fail("Failed");
        return frame.Succeed();
    });
}
