#include <backends/wrap_mib_ipaddrtable.h>

#include <support/operation/adapter_operation.h>
#include <support/trace/call_frame.h>

namespace
{

TOLVA::ASSOC_IP_ADDR AddressOf(const CallFrame& frame, const MIB_IPADDRROW& row)
{
    frame.Verbose("m_pMibIpAddrTable->table[ i ].wType", CallFrame::Hex{row.wType});
    TOLVA::ASSOC_IP_ADDR AssocIpAddr;
    AssocIpAddr.bAutomatic = (row.wType & MIB_IPADDR_DYNAMIC) != 0;
    frame.Verbose("AssocIpAddr.bAutomatic", AssocIpAddr.bAutomatic);
    AssocIpAddr.IpAddress = TOLVA::ConvertDwordToIpAddress(::ntohl(row.dwAddr));
    frame.Verbose("sIpAddress", AssocIpAddr.IpAddress);
    AssocIpAddr.SubnetPrefix = TOLVA::ConvertDwordToPrefix(::ntohl(row.dwMask));
    frame.Verbose("AssocIpAddr.SubnetPrefix", AssocIpAddr.SubnetPrefix);
    AssocIpAddr.ulIndex = row.dwIndex;
    frame.Verbose("AssocIpAddr.ulIndex", AssocIpAddr.ulIndex);
    return AssocIpAddr;
}

} // namespace

bool PreVistaAPI::Wrap_MIB_IPADDRTABLE::LoadTable()
{
    const CallFrame frame("PreVistaAPI::Wrap_MIB_IPADDRTABLE::LoadTable");
    DWORD dwRc = NO_ERROR;
    if (!m_table.Load(dwRc, [](MIB_IPADDRTABLE* pTable, ULONG& ulSize) {
            return ::GetIpAddrTable(pTable, &ulSize, pTable != nullptr);
        }))
        return frame.Fail("GetIpAddrTable failed", "dwRc", dwRc);
    return frame.Succeed();
}

bool PreVistaAPI::Wrap_MIB_IPADDRTABLE::GetAdaptersIpAddrs(const TOLVA::NIC_INFO& NicInfo,
                                                           std::vector<TOLVA::ASSOC_IP_ADDR>& IpAddrs)
{
    const CallFrame frame("PreVistaAPI::Wrap_MIB_IPADDRTABLE::GetAdaptersIpAddrs");
    if (!m_table && !LoadTable())
        return frame.Fail("Failed to load MIB IP Address table");
    unsigned long ulIndex = 0;
    if (!FindIndex(frame, NicInfo, ulIndex))
        return false;

    for (const MIB_IPADDRROW& row : m_table.Rows())
        if (row.dwIndex == ulIndex)
            IpAddrs.push_back(AddressOf(frame, row));
    return frame.Succeed();
}
