#include "backends_test.h"

#include <algorithm>

#include <support/trace/call_frame.h>

namespace
{

std::string Dotted(DWORD dwNetworkOrder)
{
    IN_ADDR address;
    address.s_addr = dwNetworkOrder;
    return ::inet_ntoa(address);
}

std::string Plain(const velmor::ip_address& address)
{
    return TextOf(address).narrow_c_str();
}

template <class... Numbers>
std::string Row(const Numbers&... numbers)
{
    return Joined(Joined(' ', static_cast<int>(numbers))...);
}

/// What makes two routes the same.
std::string Identity(const MIB_IPFORWARDROW& row)
{
    return Joined(Dotted(row.dwForwardDest), " & ", Dotted(row.dwForwardMask), " via ", Dotted(row.dwForwardNextHop),
                  " if ", row.dwForwardIfIndex);
}
std::string Identity(const MIB_IPFORWARD_ROW2& row)
{
    return Joined(Plain(velmor::ip_address(row.DestinationPrefix.Prefix)), '/', int{row.DestinationPrefix.PrefixLength},
                  " via ", Plain(velmor::ip_address(row.NextHop)), " if ", row.InterfaceIndex);
}

} // namespace

TOLVA::ROUTE_INFO Route(const char* pszDestination, unsigned char prefix, const char* pszNextHop,
                        unsigned long ulMetric)
{
    return {11, Ip(pszDestination), prefix, Ip(pszNextHop), ulMetric};
}

TOLVA::ASSOC_IP_ADDR Address(const char* pszAddress, unsigned char prefix)
{
    return {false, Ip(pszAddress), prefix, 0, IpDadStateInvalid, {}};
}

MIB_IPFORWARDROW OldRow(DWORD dwIndex, const char* pszDestination, const char* pszMask, const char* pszNextHop,
                        DWORD dwMetric)
{
    return {::inet_addr(pszDestination),
            ::inet_addr(pszMask),
            21,
            ::inet_addr(pszNextHop),
            dwIndex,
            22,
            23,
            24,
            25,
            dwMetric,
            26,
            27,
            28,
            29};
}

MIB_IPFORWARD_ROW2 NewRow(DWORD dwIndex, const char* pszDestination, UINT8 prefix, const char* pszNextHop,
                          ULONG ulMetric)
{
    MIB_IPFORWARD_ROW2 row = {};
    row.InterfaceLuid.Value = 500;
    row.InterfaceIndex = dwIndex;
    row.DestinationPrefix = {Ip(pszDestination).sockaddr(), prefix};
    row.NextHop = Ip(pszNextHop).sockaddr();
    row.SitePrefixLength = 31;
    row.ValidLifetime = 100;
    row.PreferredLifetime = 200;
    row.Metric = ulMetric;
    row.Protocol = static_cast<NL_ROUTE_PROTOCOL>(32);
    row.Loopback = TRUE;
    row.Age = 33;
    row.Origin = static_cast<NL_ROUTE_ORIGIN>(2);
    return row;
}

std::string Shown(const MIB_IPFORWARDROW& row)
{
    return Joined(Identity(row), " metric ", row.dwForwardMetric1, ':',
                  Row(row.dwForwardPolicy, row.dwForwardType, row.dwForwardProto, row.dwForwardAge,
                      row.dwForwardNextHopAS, row.dwForwardMetric2, row.dwForwardMetric3, row.dwForwardMetric4,
                      row.dwForwardMetric5));
}

std::string Shown(const MIB_IPFORWARD_ROW2& row)
{
    return Joined(Identity(row), " metric ", row.Metric, ':',
                  Row(row.InterfaceLuid.Value, row.SitePrefixLength, row.ValidLifetime, row.PreferredLifetime,
                      row.Protocol, row.Loopback, row.AutoconfigureAddress, row.Publish, row.Immortal, row.Age,
                      row.Origin));
}

std::string Shown(const std::vector<TOLVA::ROUTE_INFO>& list)
{
    std::string sText;
    for (const TOLVA::ROUTE_INFO& route : list)
        sText += Joined(Plain(route.Destination), '/', int{route.PrefixLength}, " via ", Plain(route.NextHop), " if ",
                        route.ulIndex, " metric ", route.ulMetric, "; ");
    return sText;
}

std::string Shown(const std::vector<TOLVA::ASSOC_IP_ADDR>& list)
{
    std::string sText;
    for (const TOLVA::ASSOC_IP_ADDR& address : list)
        sText += Joined(Plain(address.IpAddress), '/', int{address.SubnetPrefix}, " if ", address.ulIndex,
                        address.bAutomatic ? " automatic" : " manual", " dad ", static_cast<int>(address.enDadState),
                        " scope ", address.ScopeId.Value, "; ");
    return sText;
}

BackendTest::BackendTest()
{
    s_pTest = this;
    ReplaceLoader();
    ExportFunctions();
    ADD_PATCH(patches, GetIpForwardTable,
              [this](auto... arguments) { return FillTable("GetIpForwardTable", oldRoutes, arguments...); });
    ADD_PATCH(patches, GetIpAddrTable,
              [this](auto... arguments) { return FillTable("GetIpAddrTable", oldAddresses, arguments...); });
    ADD_PATCH(patches, CreateIpForwardEntry, [this](MIB_IPFORWARDROW* pRow) {
        return Create("CreateIpForwardEntry", oldRoutes, *pRow, pRow->dwForwardMetric1);
    });
    ADD_PATCH(patches, DeleteIpForwardEntry,
              [this](MIB_IPFORWARDROW* pRow) { return Delete("DeleteIpForwardEntry", oldRoutes, *pRow); });
}

BackendTest::~BackendTest()
{
    EXPECT_TRUE(m_tables.empty()) << "a table is still allocated";
    EXPECT_EQ(0, m_iModules) << "a module is still loaded";
}

bool BackendTest::Run(AbstractNetworkAPI& api, std::string_view sOperation, const TOLVA::NIC_INFO& NicInfo)
{
    std::vector<TOLVA::ROUTE_INFO> routeList;
    std::vector<TOLVA::ASSOC_IP_ADDR> addressList;
    const std::map<std::string_view, std::function<bool()>> operations = {
        {"GetAdapterRoutes", [&] { return api.GetAdapterRoutes(NicInfo, routeList); }},
        {"AddAdapterRoute", [&] { return api.AddAdapterRoute(NicInfo, Route("10.0.0.0", 8, "10.0.0.1", 4)); }},
        {"GetAdaptersIpAddrs", [&] { return api.GetAdaptersIpAddrs(NicInfo, addressList); }},
        {"SetDefaultGateway", [&] { return api.SetDefaultGateway(NicInfo, Ip("10.0.0.9")); }},
        {"AddIpAddr", [&] { return api.AddIpAddr(NicInfo, Address("10.0.0.5")); }},
        {"DeleteIpAddr", [&] { return api.DeleteIpAddr(NicInfo, Address("10.0.0.5")); }}};
    return operations.at(sOperation)();
}

void BackendTest::InNewProcess(const std::function<void()>& body)
{
    EXPECT_EXIT((body(), std::exit(HasFailure() ? 1 : 0)), testing::ExitedWithCode(0), "");
}

DWORD BackendTest::Called(const std::string& sFunction, const std::string& sNote)
{
    m_sAsked += sNote + "; ";
    std::deque<DWORD>& forced = codes[sFunction];
    if (forced.empty())
        return TRUE_ANSWER;
    const DWORD dwCode = forced.front();
    forced.pop_front();
    ::SetLastError(dwCode);
    return dwCode;
}

template <class Table, class Rows>
DWORD BackendTest::FillTable(const char* pszFunction, const Rows& rows, Table* pTable, ULONG* pulSize, BOOL bSort)
{
    EXPECT_EQ(pTable != nullptr, bSort != FALSE);
    const DWORD dwForced = Called(pszFunction, "table");
    const auto ulNeeded = static_cast<ULONG>(offsetof(Table, table) + rows.size() * sizeof(rows[0]));
    const ULONG ulGiven = std::exchange(*pulSize, ulNeeded);
    if (dwForced != TRUE_ANSWER)
        return dwForced;
    if (pTable == nullptr || ulGiven < ulNeeded)
        return ERROR_INSUFFICIENT_BUFFER;
    pTable->dwNumEntries = static_cast<DWORD>(rows.size());
    std::copy(rows.begin(), rows.end(), pTable->table);
    return NO_ERROR;
}

template <class Table, class Rows>
DWORD BackendTest::Allocate(const char* pszFunction, int family, const Rows& rows, Table** ppTable)
{
    *ppTable = reinterpret_cast<Table*>(this); // a failure promises nothing of it
    if (const DWORD dwForced = Called(pszFunction, Joined("table ", family)); dwForced != TRUE_ANSWER)
        return dwForced;
    std::vector<unsigned char> bytes(offsetof(Table, Table) + rows.size() * sizeof(rows[0]));
    *ppTable = reinterpret_cast<Table*>(bytes.data());
    (*ppTable)->NumEntries = static_cast<ULONG>(rows.size());
    std::copy(rows.begin(), rows.end(), (*ppTable)->Table);
    m_tables.emplace(*ppTable, std::move(bytes));
    return NO_ERROR;
}

template <class Row>
DWORD BackendTest::Create(const char* pszFunction, std::vector<Row>& table, const Row& row, DWORD dwMetric)
{
    if (const DWORD dwForced = Called(pszFunction, "create " + Shown(row)); dwForced != TRUE_ANSWER)
        return dwForced;
    if (dwMetric < dwLowestMetric)
        return ERROR_BAD_ARGUMENTS;
    if (std::any_of(table.begin(), table.end(), [&](const Row& other) { return Identity(other) == Identity(row); }))
        return ERROR_OBJECT_ALREADY_EXISTS;
    table.push_back(row);
    return NO_ERROR;
}

template <class Row>
DWORD BackendTest::Delete(const char* pszFunction, std::vector<Row>& table, const Row& row)
{
    if (const DWORD dwForced = Called(pszFunction, "delete " + Identity(row)); dwForced != TRUE_ANSWER)
        return dwForced;
    return std::erase_if(table, [sRow = Shown(row)](const Row& other) { return Shown(other) == sRow; }) > 0
               ? NO_ERROR
               : ERROR_NOT_FOUND;
}

void BackendTest::ReplaceLoader()
{
    const auto hFake = reinterpret_cast<HMODULE>(this);
    ADD_PATCH(patches, LoadLibraryW, [this, hFake](auto original, const wchar_t* pszName) {
        const std::string sName = velmor::string(pszName).narrow_c_str();
        if (sName != "IPHLPAPI.DLL" && sName != "DEVMGR.DLL")
            return original(pszName);
        Called("LoadLibraryW", "load " + sName);
        m_iModules += missing.contains(sName) ? 0 : 1;
        ::SetLastError(ERROR_MOD_NOT_FOUND);
        return missing.contains(sName) ? nullptr : hFake;
    });
    ADD_PATCH(patches, GetProcAddress, [this, hFake](auto original, HMODULE hModule, const char* pszName) {
        if (hModule != hFake)
            return original(hModule, pszName);
        Called("GetProcAddress", pszName);
        ::SetLastError(ERROR_PROC_NOT_FOUND);
        return missing.contains(pszName) ? nullptr : reinterpret_cast<FARPROC>(exports[pszName]);
    });
    ADD_PATCH(patches, FreeLibrary, [this, hFake](auto original, HMODULE hModule) -> BOOL {
        if (hModule != hFake)
            return original(hModule);
        --m_iModules;
        return TRUE;
    });
}

void BackendTest::ExportFunctions()
{
    const auto Export = [this](const char* pszName, auto* pFunction) {
        exports[pszName] = reinterpret_cast<void*>(pFunction);
    };
    Export(
        "ConvertInterfaceIndexToLuid", +[](NET_IFINDEX index, NET_LUID* pLuid) {
            pLuid->Value = index * 1000ULL;
            const DWORD dwForced = s_pTest->Called("ConvertInterfaceIndexToLuid", Joined("luid ", index));
            return dwForced != TRUE_ANSWER ? dwForced : NO_ERROR;
        });
    Export(
        "GetIpForwardTable2", +[](ADDRESS_FAMILY family, MIB_IPFORWARD_TABLE2** ppTable) {
            auto rows = s_pTest->routes;
            std::erase_if(rows, [family](const auto& row) { return family != 0 && row.NextHop.si_family != family; });
            return s_pTest->Allocate("GetIpForwardTable2", family, rows, ppTable);
        });
    Export(
        "GetUnicastIpAddressTable", +[](ADDRESS_FAMILY family, MIB_UNICASTIPADDRESS_TABLE** ppTable) {
            return s_pTest->Allocate("GetUnicastIpAddressTable", family, s_pTest->unicast, ppTable);
        });
    Export(
        "FreeMibTable", +[](void* pTable) {
            s_pTest->Called("FreeMibTable", "free");
            auto table = s_pTest->m_tables.extract(pTable);
            ASSERT_FALSE(table.empty()) << "what was not allocated is freed";
            std::fill(table.mapped().begin(), table.mapped().end(), static_cast<unsigned char>(0xDD));
            s_pTest->m_freed.push_back(std::move(table.mapped()));
        });
    Export(
        "CreateIpForwardEntry2", +[](const MIB_IPFORWARD_ROW2* pRow) {
            return s_pTest->Create("CreateIpForwardEntry2", s_pTest->routes, *pRow, pRow->Metric);
        });
    Export(
        "DeleteIpForwardEntry2", +[](const MIB_IPFORWARD_ROW2* pRow) {
            return s_pTest->Delete("DeleteIpForwardEntry2", s_pTest->routes, *pRow);
        });
    Export(
        "GetTcp6Table", +[](MIB_TCP6TABLE* pTable, ULONG* pulSize, BOOL bSort) {
            const std::string sNote = Joined("tcp6 ", pTable != nullptr, ' ', std::exchange(*pulSize, 77), ' ', bSort);
            return s_pTest->Called("GetTcp6Table", sNote);
        });
    Export(
        "SetAdapterIpAddress", +[](char* pszName, BOOL bDhcp, ULONG ulAddress, ULONG ulMask, ULONG ulGateway) {
            return s_pTest->Called("SetAdapterIpAddress", Joined("set ", pszName, ' ', bDhcp, ' ', Dotted(ulAddress),
                                                                 ' ', Dotted(ulMask), ' ', ulGateway));
        });
    Export(
        "DeviceProperties_RunDLLW", +[](HWND hwnd, HINSTANCE hInstance, const wchar_t* pszCommand, int nShow) {
            s_pTest->Called("DeviceProperties_RunDLLW", Joined(hwnd || hInstance ? "owned " : "show ",
                                                               velmor::string(pszCommand).narrow_c_str(), ' ', nShow));
        });
    for (const char* pszName :
         {"CreateUnicastIpAddressEntry", "DeleteUnicastIpAddressEntry", "InitializeUnicastIpAddressEntry"})
        Export(
            pszName, +[] { ADD_FAILURE() << "called, though it only has to be looked up"; });
}
