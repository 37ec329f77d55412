#include <backends/vista_api.h>
#include <support/operation/adapter_operation.h>

#include <algorithm>
#include <span>

#include <backends/rising_metric.h>
#include <backends/vista_descriptions.h>
#include <support/platform/module_function.h>
#include <tools/wrap_netsh.h>
#include <zelk_common/looked_up_functions.h>

namespace
{

constexpr ULONG INFINITE_LIFETIME = 0xFFFFFFFF;

void TraceRoute(const CallFrame& frame, const MIB_IPFORWARD_ROW2& row)
{
    frame.Verbose("pIpForwardTable2->Table[i].InterfaceIndex", row.InterfaceIndex);
    frame.Verbose("pIpForwardTable2->Table[i].ValidLifetime", row.ValidLifetime);
    frame.Verbose("pIpForwardTable2->Table[i].PreferredLifetime", row.PreferredLifetime);
    frame.Verbose("pIpForwardTable2->Table[i].Metric", row.Metric);
    frame.Verbose("pIpForwardTable2->Table[i].Protocol", row.Protocol);
    frame.Verbose("pIpForwardTable2->Table[i].Age", row.Age);
    frame.Verbose("pIpForwardTable2->Table[i].Origin", row.Origin);
}

TOLVA::ROUTE_INFO RouteOf(const MIB_IPFORWARD_ROW2& row)
{
    TOLVA::ROUTE_INFO route;
    route.ulIndex = row.InterfaceIndex;
    route.Destination = TOLVA::Convert_SOCKADDR_INET(row.DestinationPrefix.Prefix);
    route.PrefixLength = row.DestinationPrefix.PrefixLength;
    route.NextHop = TOLVA::Convert_SOCKADDR_INET(row.NextHop);
    route.ulMetric = row.Metric;
    return route;
}

/// What every route that the library makes has in common.
void MarkAsManaged(MIB_IPFORWARD_ROW2& row)
{
    row.Protocol = RouteProtocolNetMgmt;
    row.Publish = TRUE;
    row.Immortal = TRUE;
    row.Age = 0;
    row.Origin = NlroManual;
}

MIB_IPFORWARD_ROW2 RowOf(const TOLVA::ROUTE_INFO& Route, const NET_LUID& luid)
{
    // Not made by InitializeIpForwardEntry, which presets flags that are to be off here: what is not set stays zero.
    MIB_IPFORWARD_ROW2 row = {};
    // Where both name the interface, the LUID decides; the index is for readers of the row.
    row.InterfaceLuid = luid;
    row.InterfaceIndex = Route.ulIndex;
    row.DestinationPrefix.Prefix = TOLVA::Convert_SOCKADDR_INET(Route.Destination);
    row.DestinationPrefix.PrefixLength = Route.PrefixLength;
    row.NextHop = TOLVA::Convert_SOCKADDR_INET(Route.NextHop);
    row.ValidLifetime = INFINITE_LIFETIME;
    row.PreferredLifetime = INFINITE_LIFETIME;
    row.Metric = Route.ulMetric;
    MarkAsManaged(row);
    return row;
}

bool IsAutomatic(const MIB_UNICASTIPADDRESS_ROW& row) noexcept
{
    return row.PrefixOrigin != IpPrefixOriginManual || row.SuffixOrigin != IpSuffixOriginManual;
}

TOLVA::ASSOC_IP_ADDR AddressOf(const CallFrame& frame, const MIB_UNICASTIPADDRESS_ROW& row,
                               const velmor::ip_address& address)
{
    TOLVA::ASSOC_IP_ADDR AssocIpAddr;
    AssocIpAddr.bAutomatic = IsAutomatic(row);
    frame.Verbose("AssocIpAddr.bAutomatic", AssocIpAddr.bAutomatic);
    AssocIpAddr.IpAddress = address;
    AssocIpAddr.SubnetPrefix = row.OnLinkPrefixLength;
    frame.Verbose("AssocIpAddr.SubnetPrefix", AssocIpAddr.SubnetPrefix);
    AssocIpAddr.ScopeId = row.ScopeId;
    DescribeScope(frame, AssocIpAddr.ScopeId);
    AssocIpAddr.enDadState = row.DadState;
    DescribeDadState(frame, AssocIpAddr.enDadState);
    DescribePrefixOrigin(frame, row.PrefixOrigin);
    DescribeSuffixOrigin(frame, row.SuffixOrigin);
    AssocIpAddr.ulIndex = row.InterfaceIndex;
    frame.Verbose("AssocIpAddr.ulIndex", AssocIpAddr.ulIndex);
    return AssocIpAddr;
}

/// What a failed call leaves in the pointer is no table and must not be freed.
template <class Table>
DWORD Received(DWORD dwRc, Table*& pTable) noexcept
{
    if (dwRc != NO_ERROR)
        pTable = nullptr;
    return dwRc;
}

template <class Table>
auto Rows(const Table& table) noexcept
{
    return std::span(table.Table, table.NumEntries);
}

/// Hands an address change to its driver.
template <class Change>
bool ChangeAddress(const char* pszName, const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr,
                   Change change)
{
    const CallFrame frame(pszName);
    if (!HasGuid(frame, NicInfo))
        return false;
    if (!IpAddr.IpAddress.is_valid())
        return frame.Fail("Bad IpAddr");
    const bool bRc = change(NicInfo, IpAddr);
    frame.Verbose("... ending", "bRc", bRc);
    return bRc;
}

} // namespace

void VistaAPI::FreeTable::operator()(void* pTable) const noexcept
{
    pApi->FreeMibTable(pTable);
}

VistaAPI::VistaAPI() : m_hModule(::LoadLibraryW(L"IPHLPAPI.DLL"))
{
    if (!m_hModule)
    {
        CallFrame::WithoutStart("VistaAPI::VistaAPI")
            .Error("LoadLibrary('IPHLPAPI.DLL') failed", "dwLastError", ::GetLastError());
        return;
    }
    const auto Find = [this](const char* pszName, auto*& pFunction) {
        pFunction = velmor::FindFunction<std::remove_reference_t<decltype(*pFunction)>>(m_hModule.Get(), pszName);
    };
    Find(zelk_common::CONVERT_INTERFACE_INDEX_TO_LUID, m_pConvertInterfaceIndexToLuid);
    Find(zelk_common::CREATE_UNICAST_IP_ADDRESS_ENTRY, m_pCreateUnicastIpAddressEntry);
    Find(zelk_common::CREATE_IP_FORWARD_ENTRY2, m_pCreateIpForwardEntry2);
    Find(zelk_common::DELETE_IP_FORWARD_ENTRY2, m_pDeleteIpForwardEntry2);
    Find(zelk_common::DELETE_UNICAST_IP_ADDRESS_ENTRY, m_pDeleteUnicastIpAddressEntry);
    Find(zelk_common::FREE_MIB_TABLE, m_pFreeMibTable);
    Find(zelk_common::GET_IP_FORWARD_TABLE2, m_pGetIpForwardTable2);
    Find(zelk_common::GET_UNICAST_IP_ADDRESS_TABLE, m_pGetUnicastIpAddressTable);
    Find(zelk_common::INITIALIZE_UNICAST_IP_ADDRESS_ENTRY, m_pInitializeUnicastIpAddressEntry);
    Find(zelk_common::GET_TCP6_TABLE, m_pGetTcp6Table);
}

DWORD VistaAPI::ConvertInterfaceIndexToLuid(NET_IFINDEX index, NET_LUID& luid) const noexcept
{
    return m_pConvertInterfaceIndexToLuid ? m_pConvertInterfaceIndexToLuid(index, &luid) : ERROR_INVALID_FUNCTION;
}

DWORD VistaAPI::CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2& row) const noexcept
{
    return m_pCreateIpForwardEntry2 ? m_pCreateIpForwardEntry2(&row) : ERROR_INVALID_FUNCTION;
}

DWORD VistaAPI::DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2& row) const noexcept
{
    return m_pDeleteIpForwardEntry2 ? m_pDeleteIpForwardEntry2(&row) : ERROR_INVALID_FUNCTION;
}

void VistaAPI::FreeMibTable(void* pTable) const noexcept
{
    if (m_pFreeMibTable)
        m_pFreeMibTable(pTable);
}

DWORD VistaAPI::GetIpForwardTable2(ADDRESS_FAMILY family, MIB_IPFORWARD_TABLE2*& pTable) const noexcept
{
    return Received(m_pGetIpForwardTable2 ? m_pGetIpForwardTable2(family, &pTable) : ERROR_INVALID_FUNCTION, pTable);
}

DWORD VistaAPI::GetUnicastIpAddressTable(MIB_UNICASTIPADDRESS_TABLE*& pTable) const noexcept
{
    return Received(
        m_pGetUnicastIpAddressTable ? m_pGetUnicastIpAddressTable(AF_UNSPEC, &pTable) : ERROR_INVALID_FUNCTION, pTable);
}

bool VistaAPI::GetAdapterRoutes(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ROUTE_INFO>& Routes)
{
    const CallFrame frame("VistaAPI::GetAdapterRoutes");
    if (!HasGuid(frame, NicInfo))
        return false;
    unsigned long ulIndex = 0;
    if (!FindIndex(frame, NicInfo, ulIndex, "GetAdapterIndex failed"))
        return false;
    MibTable<MIB_IPFORWARD_TABLE2> table(FreeTable{this});
    if (const DWORD dwRc = GetIpForwardTable2(AF_UNSPEC, *table.Receive()); dwRc != NO_ERROR)
        return frame.Fail("VistaAPI::GetIpForwardTable2 failed", "dwRc", dwRc);

    const auto IsWanted = [ulIndex](const MIB_IPFORWARD_ROW2& row) { return row.InterfaceIndex == ulIndex; };
    const auto rows = Rows(*table.Get());
    // Counted first: of thousands of routes, growing the list by and by takes longer than making them.
    Routes.reserve(Routes.size() + static_cast<std::size_t>(std::count_if(rows.begin(), rows.end(), IsWanted)));
    for (const MIB_IPFORWARD_ROW2& row : rows)
    {
        TraceRoute(frame, row);
        if (IsWanted(row))
            Routes.push_back(RouteOf(row));
    }
    return frame.Succeed();
}

bool VistaAPI::AddAdapterRoute(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ROUTE_INFO& Route)
{
    const CallFrame frame("VistaAPI::AddAdapterRoute");
    if (!HasGuid(frame, NicInfo))
        return false;
    NET_LUID luid = {};
    if (const DWORD dwRc = ConvertInterfaceIndexToLuid(Route.ulIndex, luid); dwRc != NO_ERROR)
        return frame.Fail("VistaAPI::ConvertInterfaceIndexToLuid failed", "dwRc", dwRc);

    MIB_IPFORWARD_ROW2 forwardRow2 = RowOf(Route, luid);
    const auto Create = [&] { return CreateIpForwardEntry2(forwardRow2); };
    DWORD dwRc = Create();
    // Only of the first attempt: a metric that was raised meets another route than the one asked for.
    if (dwRc == ERROR_OBJECT_ALREADY_EXISTS)
    {
        frame.Information("Route already exists");
        return frame.Succeed();
    }
    dwRc = RaiseMetricWhileRefused(frame, "forwardRow2.Metric", forwardRow2.Metric, dwRc, Create);
    if (dwRc != NO_ERROR)
        return frame.Fail("VistaAPI::CreateIpForwardEntry2 failed", "dwRc", dwRc);
    return frame.Succeed();
}

bool VistaAPI::GetAdaptersIpAddrs(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ASSOC_IP_ADDR>& IpAddrs)
{
    const CallFrame frame("VistaAPI::GetAdaptersIpAddrs");
    if (!HasGuid(frame, NicInfo))
        return false;
    unsigned long ulIndex = 0;
    if (!FindIndex(frame, NicInfo, ulIndex))
        return false;
    MibTable<MIB_UNICASTIPADDRESS_TABLE> table(FreeTable{this});
    if (const DWORD dwRc = GetUnicastIpAddressTable(*table.Receive()); dwRc != NO_ERROR)
        return frame.Fail("VistaAPI::GetUnicastIpAddressTable failed", "dwRc", dwRc);

    for (const MIB_UNICASTIPADDRESS_ROW& row : Rows(*table.Get()))
    {
        if (row.InterfaceIndex != ulIndex)
            continue;
        // The façade's conversion would turn another family into 0.0.0.0, but such a row is left out.
        velmor::ip_address address(row.Address);
        if (address.is_valid())
            address = TOLVA::Convert_SOCKADDR_INET(row.Address);
        frame.Verbose("sAddress", address);
        if (address.is_valid())
            IpAddrs.push_back(AddressOf(frame, row, address));
    }
    return frame.Succeed();
}

bool VistaAPI::SetDefaultGateway(const TOLVA::NIC_INFO& NicInfo, const velmor::ip_address& Gateway)
{
    const CallFrame frame("VistaAPI::SetDefaultGateway");
    if (!HasGuid(frame, NicInfo))
        return false;
    if (!Gateway.is_valid())
        return frame.Fail("Invalid gateway address");
    unsigned long ulIndex = 0;
    if (!FindIndex(frame, NicInfo, ulIndex))
        return false;

    bool bFound = false;
    MIB_IPFORWARD_ROW2 forwardRow2 = {};
    if (!DeleteDefaultRoutes(frame, ulIndex, Gateway.is_ipv4() ? AF_INET : AF_INET6, bFound, forwardRow2))
        return false;
    if (!bFound && !FillNewDefaultRoute(frame, ulIndex, Gateway, forwardRow2))
        return false;

    forwardRow2.NextHop = TOLVA::Convert_SOCKADDR_INET(Gateway);
    MarkAsManaged(forwardRow2);
    const auto Create = [&] { return CreateIpForwardEntry2(forwardRow2); };
    const DWORD dwRc = RaiseMetricWhileRefused(frame, "forwardRow2.Metric", forwardRow2.Metric, Create(), Create);
    if (dwRc != NO_ERROR)
        return frame.Fail("VistaAPI::CreateIpForwardEntry2 failed", "dwRc", dwRc);
    return frame.Succeed();
}

/// A part of SetDefaultGateway: deletes the default routes of the interface and family. `first` is a copy of the first
/// of them. A refused deletion does not end the walk but fails it.
bool VistaAPI::DeleteDefaultRoutes(const CallFrame& frame, unsigned long ulIndex, ADDRESS_FAMILY family, bool& bFound,
                                   MIB_IPFORWARD_ROW2& first) const
{
    MibTable<MIB_IPFORWARD_TABLE2> table(FreeTable{this});
    if (const DWORD dwRc = GetIpForwardTable2(family, *table.Receive()); dwRc != NO_ERROR)
        return frame.Fail("VistaAPI::GetIpForwardTable2 failed", "dwRc", dwRc);

    bool bFailed = false;
    for (const MIB_IPFORWARD_ROW2& row : Rows(*table.Get()))
    {
        frame.Verbose("pIpForwardTable2->Table[i].DestinationPrefix.PrefixLength", row.DestinationPrefix.PrefixLength);
        frame.Verbose("sDestinationPrefix", TOLVA::Convert_SOCKADDR_INET(row.DestinationPrefix.Prefix));
        const velmor::ip_address nextHop = TOLVA::Convert_SOCKADDR_INET(row.NextHop);
        frame.Verbose("sNextHop", nextHop);
        if (row.InterfaceIndex != ulIndex || row.DestinationPrefix.PrefixLength != 0)
            continue;
        if (!bFound)
            first = row;
        bFound = true;
        frame.Information("Delete", "sNextHop", nextHop);
        if (const DWORD dwRc = DeleteIpForwardEntry2(row); dwRc != NO_ERROR)
            bFailed = !frame.Fail("VistaAPI::DeleteIpForwardEntry2 failed", "dwRc", dwRc);
    }
    return bFailed ? frame.Fail("Failed") : true;
}

/// A part of SetDefaultGateway: the row for an interface that has no default route yet.
bool VistaAPI::FillNewDefaultRoute(const CallFrame& frame, unsigned long ulIndex, const velmor::ip_address& Gateway,
                                   MIB_IPFORWARD_ROW2& row) const
{
    if (const DWORD dwRc = ConvertInterfaceIndexToLuid(ulIndex, row.InterfaceLuid); dwRc != NO_ERROR)
        return frame.Fail("VistaAPI::ConvertInterfaceIndexToLuid failed", "dwRc", dwRc);
    row.InterfaceIndex = ulIndex;
    row.DestinationPrefix.Prefix =
        TOLVA::Convert_SOCKADDR_INET(velmor::ip_address(Gateway.is_ipv4() ? L"0.0.0.0" : L"::"));
    row.ValidLifetime = INFINITE_LIFETIME;
    row.PreferredLifetime = INFINITE_LIFETIME;
    frame.Verbose("No default gateway found, creating new entry");
    return true;
}

bool VistaAPI::AddIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr)
{
    return ChangeAddress("VistaAPI::AddIpAddr", NicInfo, IpAddr, &Wrap_netsh::AddIpAddr);
}

bool VistaAPI::DeleteIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr)
{
    return ChangeAddress("VistaAPI::DeleteIpAddr", NicInfo, IpAddr, &Wrap_netsh::RemoveIpAddr);
}

unsigned long VistaAPI::GetTcp6Table(MIB_TCP6TABLE* pTable, unsigned long* pulSize, bool bSort)
{
    return m_pGetTcp6Table ? m_pGetTcp6Table(pTable, pulSize, bSort) : ERROR_INVALID_FUNCTION;
}
