#pragma once

// IP configuration: addresses, leases, gateways and DNS servers, changed as a whole. Windows keeps them twice: in use
// by the stack, and in the registry for the next start. An operation here changes one, the other or both, as its
// documentation says; nothing is rolled back when a later step fails, since undoing could fail as well and would leave
// the machine in a third state.

#include <vector>

#include <support/operation/family.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

/// Which removals an operation traces. It always traces refusals.
enum class TraceRemoved
{
    Ipv6Only,
    All
};

/// Removes every address of the family, however it came, by `remove`, and goes on after a refusal. True when none was
/// refused.
template <class Remove>
bool RemoveAddresses(const CallFrame& frame, TOLVA::FAMILY_TYPE enFamilyType,
                     const std::vector<TOLVA::ASSOC_IP_ADDR>& IpAddrs, TraceRemoved traceRemoved, Remove&& remove)
{
    bool bAllRemoved = true;
    for (const TOLVA::ASSOC_IP_ADDR& IpAddr : IpAddrs)
    {
        if (!Includes(enFamilyType, IpAddr.IpAddress))
            continue;
        if (!remove(IpAddr))
        {
            frame.Error("DeleteIpAddr failed", "sCurrentIpAddress", IpAddr.IpAddress);
            bAllRemoved = false;
        }
        else if (traceRemoved == TraceRemoved::All || IpAddr.IpAddress.is_ipv6())
            frame.Information("Removed", "sCurrentIpAddress", IpAddr.IpAddress);
    }
    return bAllRemoved;
}
