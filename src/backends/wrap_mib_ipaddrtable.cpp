#include <backends/wrap_mib_ipaddrtable.h>

#include <span>

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
    m_pMibIpAddrTable = nullptr;
    DWORD dwRc = NO_ERROR;
    if (!velmor::AskThenCall(m_buffer, dwRc, [](void* pTable, ULONG& ulSize) {
            return ::GetIpAddrTable(static_cast<MIB_IPADDRTABLE*>(pTable), &ulSize, pTable != nullptr);
        }))
        return frame.Fail("GetIpAddrTable failed", "dwRc", dwRc);
    m_pMibIpAddrTable = reinterpret_cast<MIB_IPADDRTABLE*>(m_buffer.data());
    return frame.Succeed();
}

bool PreVistaAPI::Wrap_MIB_IPADDRTABLE::GetAdaptersIpAddrs(const TOLVA::NIC_INFO& NicInfo,
                                                           std::vector<TOLVA::ASSOC_IP_ADDR>& IpAddrs)
{
    const CallFrame frame("PreVistaAPI::Wrap_MIB_IPADDRTABLE::GetAdaptersIpAddrs");
    if (m_pMibIpAddrTable == nullptr && !LoadTable())
        return frame.Fail("Failed to load MIB IP Address table");
    unsigned long ulIndex = 0;
    if (!TOLVA::GetAdapterIndex(NicInfo, ulIndex))
        return frame.Fail("TOLVA::GetAdapterIndex failed");

    for (const MIB_IPADDRROW& row : std::span(m_pMibIpAddrTable->table, m_pMibIpAddrTable->dwNumEntries))
        if (row.dwIndex == ulIndex)
            IpAddrs.push_back(AddressOf(frame, row));
    return frame.Succeed();
}
