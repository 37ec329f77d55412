#include <backends/pre_vista_api.h>

#include <backends/rising_metric.h>
#include <backends/wrap_iphlpapi_dll.h>
#include <backends/wrap_mib_ipaddrtable.h>
#include <backends/wrap_mib_ipforwardtable.h>
#include <support/operation/adapter_operation.h>
#include <support/platform/first_use.h>
#include <support/platform/table_query.h>
#include <support/trace/call_frame.h>

namespace
{

constexpr DWORD NO_METRIC = 0xFFFFFFFF; // MIB_IPROUTE_METRIC_UNUSED

/// A row that everything but the addresses, the interface and the first metric is set in.
MIB_IPFORWARDROW NewRow(unsigned long ulIndex)
{
    MIB_IPFORWARDROW row = {};
    row.dwForwardIfIndex = ulIndex;
    row.dwForwardType = MIB_IPROUTE_TYPE_INDIRECT;
    row.dwForwardProto = MIB_IPPROTO_NETMGMT;
    row.dwForwardMetric2 = NO_METRIC;
    row.dwForwardMetric3 = NO_METRIC;
    row.dwForwardMetric4 = NO_METRIC;
    row.dwForwardMetric5 = NO_METRIC;
    return row;
}

DWORD NetworkOrder(const velmor::ip_address& address)
{
    return ::htonl(TOLVA::ConvertIpAddressToDword(address));
}

bool CreateRoute(const CallFrame& frame, MIB_IPFORWARDROW& forwardRow)
{
    const auto Create = [&] { return ::CreateIpForwardEntry(&forwardRow); };
    const DWORD dwRc =
        RaiseMetricWhileRefused(frame, "forwardRow.dwForwardMetric1", forwardRow.dwForwardMetric1, Create(), Create);
    if (dwRc != NO_ERROR)
        return frame.FailAs("... ending(CreateIpForwardEntry failed)", "dwRc", dwRc);
    return frame.Succeed();
}

/// The adapters of the machine, each with its addresses. The table of addresses alone does not have the context by
/// which an address is deleted.
bool LoadAdapters(const CallFrame& frame, velmor::TableBuffer& buffer)
{
    buffer.assign(sizeof(IP_ADAPTER_INFO), 0);
    DWORD dwRc = NO_ERROR;
    if (!velmor::CallThenGrowOnce(buffer, dwRc, [](void* pTable, ULONG& ulSize) {
            return ::GetAdaptersInfo(static_cast<IP_ADAPTER_INFO*>(pTable), &ulSize);
        }))
        return frame.FailAs("... ending(GetAdaptersInfo failed)", "dwRc", dwRc);
    return true;
}

const IP_ADAPTER_INFO* FindAdapter(const velmor::TableBuffer& buffer, unsigned long ulIndex)
{
    const auto* pAdapter = reinterpret_cast<const IP_ADAPTER_INFO*>(buffer.data());
    while (pAdapter != nullptr && pAdapter->Index != ulIndex)
        pAdapter = pAdapter->Next;
    return pAdapter;
}

/// Addresses are texts in this table, whose context DeleteIPAddress wants.
const IP_ADDR_STRING* FindAddress(const CallFrame& frame, const IP_ADAPTER_INFO& adapter,
                                  const velmor::ip_address& address)
{
    for (const IP_ADDR_STRING* pIpAddress = &adapter.IpAddressList; pIpAddress != nullptr;
         pIpAddress = pIpAddress->Next)
    {
        const char* pszAddress = pIpAddress->IpAddress.String;
        frame.Verbose("pIpAddress->IpAddress.String", pszAddress);
        const velmor::ip_address thisAddress{velmor::string(pszAddress)};
        frame.Verbose("sThisAddr", thisAddress);
        if (thisAddress == address)
            return pIpAddress;
    }
    return nullptr;
}

} // namespace

bool PreVistaAPI::GetAdapterRoutes(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ROUTE_INFO>& Routes)
{
    const CallFrame frame("PreVistaAPI::GetAdapterRoutes");
    if (!HasGuid(frame, NicInfo))
        return false;
    static Wrap_MIB_IPFORWARDTABLE table;
    return table.GetAdapterRoutes(NicInfo, Routes) && frame.Succeed();
}

bool PreVistaAPI::AddAdapterRoute(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ROUTE_INFO& Route)
{
    const CallFrame frame("PreVistaAPI::AddAdapterRoute");
    if (!HasGuid(frame, NicInfo))
        return false;
    if (Route.Destination.is_ipv6() || Route.NextHop.is_ipv6())
        return frame.Fail("Can't set an IPv6 route");

    MIB_IPFORWARDROW forwardRow = NewRow(Route.ulIndex);
    forwardRow.dwForwardDest = NetworkOrder(Route.Destination);
    forwardRow.dwForwardMask = ::htonl(TOLVA::ConvertPrefixToDword(Route.PrefixLength));
    forwardRow.dwForwardNextHop = NetworkOrder(Route.NextHop);
    forwardRow.dwForwardMetric1 = Route.ulMetric;
    return CreateRoute(frame, forwardRow);
}

bool PreVistaAPI::SetDefaultGateway(const TOLVA::NIC_INFO& NicInfo, const velmor::ip_address& Gateway)
{
    const CallFrame frame("PreVistaAPI::SetDefaultGateway");
    if (!HasGuid(frame, NicInfo))
        return false;
    if (!Gateway.is_valid())
        return frame.Fail("Invalid gateway address");

    static Wrap_MIB_IPFORWARDTABLE table;
    bool bFound = false;
    MIB_IPFORWARDROW forwardRow = {};
    // The text names the other table's class; it is the one that the log's readers know.
    if (!table.DeleteDefaultRoute(NicInfo, bFound, forwardRow))
        return frame.Fail("Wrap_MIB_IPADDRTABLE::DeleteDefaultRoute failed");
    unsigned long ulIndex = 0;
    if (!FindIndex(frame, NicInfo, ulIndex, "TOLVA::getAdapterIndex failed"))
        return false;

    if (!bFound)
        forwardRow = NewRow(ulIndex);
    forwardRow.dwForwardNextHop = NetworkOrder(Gateway);
    if (!bFound)
        frame.Verbose("No default gateway found, creating new entry");
    return CreateRoute(frame, forwardRow);
}

bool PreVistaAPI::GetAdaptersIpAddrs(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ASSOC_IP_ADDR>& IpAddrs)
{
    const CallFrame frame("PreVistaAPI::GetAdaptersIpAddrs");
    if (!HasGuid(frame, NicInfo))
        return false;
    static Wrap_MIB_IPADDRTABLE table;
    const bool bRc = table.GetAdaptersIpAddrs(NicInfo, IpAddrs);
    frame.Verbose("bRc", bRc);
    // The contract of TOLVA::GetAdaptersIpAddrs: before Vista a table that cannot be read counts as one without
    // addresses, so that addresses can be set all the same. Routes have no such contract.
    return frame.Succeed();
}

bool PreVistaAPI::AddIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr)
{
    const CallFrame frame("PreVistaAPI::AddIpAddr");
    if (!HasGuid(frame, NicInfo))
        return false;
    if (IpAddr.IpAddress.is_ipv6())
    {
        frame.Warning("AddIpAddr called with IPv6 address with O/S prior to Vista", "sIpAddr", IpAddr.IpAddress);
        return frame.Succeed();
    }

    const unsigned long dwIpAddr = TOLVA::ConvertIpAddressToDword(IpAddr.IpAddress);
    const unsigned long dwSubnet = TOLVA::ConvertPrefixToDword(IpAddr.SubnetPrefix);
    frame.Verbose("NicInfo.sNicGuid", NicInfo.sNicGuid);
    frame.Verbose("dwIpAddr", dwIpAddr);
    frame.Verbose("dwSubnet", dwSubnet);

    const auto& library = velmor::FirstUse<Wrap_IPHLPAPI_DLL>();
    const DWORD dwRc = library.SetAdapterIpv4Address(NicInfo.sNicGuid, dwIpAddr, dwSubnet);
    if (dwRc == ERROR_DUP_NAME)
        return frame.Fail("SetAdapterIpAddress failed - Duplicate IP address?");
    if (dwRc != NO_ERROR)
        return frame.Fail("SetAdapterIpAddress failed", "dwRc", dwRc);
    return frame.Succeed();
}

bool PreVistaAPI::DeleteIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr)
{
    const CallFrame frame("PreVistaAPI::DeleteIpAddr");
    if (!HasGuid(frame, NicInfo))
        return false;
    unsigned long ulInterfaceIndex = 0;
    if (!FindIndex(frame, NicInfo, ulInterfaceIndex, "TOLVA::getAdapterIndex failed"))
        return false;
    frame.Verbose("ulInterfaceIndex", ulInterfaceIndex);

    velmor::TableBuffer adapters;
    if (!LoadAdapters(frame, adapters))
        return false;
    const IP_ADAPTER_INFO* pAdapter = FindAdapter(adapters, ulInterfaceIndex);
    const IP_ADDR_STRING* pFound = pAdapter != nullptr ? FindAddress(frame, *pAdapter, IpAddr.IpAddress) : nullptr;
    if (pFound == nullptr)
        return frame.Succeed();

    frame.Verbose("Found matching IPv4 address", "ulNteContext", pFound->Context);
    const DWORD dwRc = ::DeleteIPAddress(pFound->Context);
    // The two codes are those of an address that is gone already; the contract takes both for success.
    if (dwRc == NO_ERROR)
        frame.Verbose("Deleted");
    else if (dwRc != ERROR_GEN_FAILURE && dwRc != ERROR_NOT_FOUND)
        return frame.Fail("DeleteIPAddress failed", "dwRc", dwRc);
    return frame.Succeed();
}

unsigned long PreVistaAPI::GetTcp6Table(MIB_TCP6TABLE*, unsigned long*, bool)
{
    return ERROR_INVALID_FUNCTION;
}
