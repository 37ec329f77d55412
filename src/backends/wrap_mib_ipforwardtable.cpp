#include <backends/wrap_mib_ipforwardtable.h>

#include <support/operation/adapter_operation.h>
#include <support/trace/call_frame.h>

namespace
{

TOLVA::ROUTE_INFO RouteOf(const MIB_IPFORWARDROW& row)
{
    TOLVA::ROUTE_INFO route;
    route.ulIndex = row.dwForwardIfIndex;
    route.Destination = TOLVA::ConvertDwordToIpAddress(::ntohl(row.dwForwardDest));
    route.PrefixLength = TOLVA::ConvertDwordToPrefix(::ntohl(row.dwForwardMask));
    route.NextHop = TOLVA::ConvertDwordToIpAddress(::ntohl(row.dwForwardNextHop));
    route.ulMetric = row.dwForwardMetric1;
    return route;
}

} // namespace

bool PreVistaAPI::Wrap_MIB_IPFORWARDTABLE::LoadTable()
{
    const CallFrame frame("PreVistaAPI::Wrap_MIB_IPFORWARDTABLE::LoadTable");
    DWORD dwRc = NO_ERROR;
    if (!m_table.Load(dwRc, [](MIB_IPFORWARDTABLE* pTable, ULONG& ulSize) {
            return ::GetIpForwardTable(pTable, &ulSize, pTable != nullptr);
        }))
        return frame.Fail("GetIpForwardTable failed", "dwRc", dwRc);
    return frame.Succeed();
}

bool PreVistaAPI::Wrap_MIB_IPFORWARDTABLE::GetAdapterRoutes(const TOLVA::NIC_INFO& NicInfo,
                                                            std::vector<TOLVA::ROUTE_INFO>& Routes)
{
    const CallFrame frame("PreVistaAPI::Wrap_MIB_IPFORWARDTABLE::GetAdapterRoutes");
    if (!m_table && !LoadTable())
        return frame.Fail("Failed to load MIB IP Forward table");
    unsigned long ulIndex = 0;
    if (!FindIndex(frame, NicInfo, ulIndex))
        return false;

    for (const MIB_IPFORWARDROW& row : m_table.Rows())
        if (row.dwForwardIfIndex == ulIndex)
            Routes.push_back(RouteOf(row));
    return frame.Succeed();
}

bool PreVistaAPI::Wrap_MIB_IPFORWARDTABLE::DeleteDefaultRoute(const TOLVA::NIC_INFO& NicInfo, bool& bFound,
                                                              MIB_IPFORWARDROW& row)
{
    const CallFrame frame("PreVistaAPI::Wrap_MIB_IPFORWARDTABLE::DeleteDefaultRoute");
    if (!m_table && !LoadTable())
        return frame.Fail("Failed to load MIB IP Forward table");
    unsigned long ulIndex = 0;
    if (!FindIndex(frame, NicInfo, ulIndex))
        return false;

    for (MIB_IPFORWARDROW& candidate : m_table.Rows())
    {
        // The destination alone decides: the mask is not looked at, unlike on later systems.
        if (candidate.dwForwardIfIndex != ulIndex || candidate.dwForwardDest != 0)
            continue;
        bFound = true;
        row = candidate;
        const DWORD dwRc = ::DeleteIpForwardEntry(&candidate);
        if (dwRc != NO_ERROR)
            return frame.FailAs("... ending(DeleteIpForwardEntry failed)", "dwRc", dwRc);
    }
    return frame.Succeed();
}
