#include <support/fakes/platform_test.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <numeric>
#include <regex>
#include <utility>

#include <support/files.h>
#include <support/registry_json.h>
#include <support/trace/call_frame.h>

#include <setupapi.h>

namespace testing_support
{
namespace
{

PlatformTest* pCurrent;

/// The function that starts a command, with as many arguments as the library gives it.
template <std::size_t>
using Word = const wchar_t*;
template <std::size_t... Index>
auto SpawnOf(std::index_sequence<Index...>) -> std::intptr_t (*)(int, Word<Index>...);
using Spawn = decltype(SpawnOf(std::make_index_sequence<19>()));

std::string Dotted(DWORD dwNetworkOrder)
{
    IN_ADDR address;
    address.s_addr = dwNetworkOrder;
    return ::inet_ntoa(address);
}

DWORD Mask(UINT8 prefix)
{
    return ::htonl(static_cast<DWORD>(0xFFFFFFFF00000000 >> prefix));
}

// Every field in one line; what comes before the metric makes two routes the same.
std::string ShowRow(const MIB_IPFORWARDROW& row)
{
    return Show(Dotted(row.dwForwardDest), "mask", Dotted(row.dwForwardMask), "via", Dotted(row.dwForwardNextHop), "if",
                row.dwForwardIfIndex, "metric", row.dwForwardMetric1, "policy", row.dwForwardPolicy, "type",
                row.dwForwardType, "proto", row.dwForwardProto, "age", row.dwForwardAge, "as", row.dwForwardNextHopAS,
                "others", row.dwForwardMetric2, row.dwForwardMetric3, row.dwForwardMetric4, row.dwForwardMetric5);
}
std::string ShowRow(const MIB_IPFORWARD_ROW2& row)
{
    return Show(velmor::ip_address(row.DestinationPrefix.Prefix), "prefix", row.DestinationPrefix.PrefixLength, "via",
                velmor::ip_address(row.NextHop), "if", row.InterfaceIndex, "metric", row.Metric, "luid",
                row.InterfaceLuid.Value, "site", row.SitePrefixLength, "valid", row.ValidLifetime, "preferred",
                row.PreferredLifetime, "protocol", row.Protocol, "loopback", bool{row.Loopback != 0}, "autoconfigure",
                bool{row.AutoconfigureAddress != 0}, "publish", bool{row.Publish != 0}, "immortal",
                bool{row.Immortal != 0}, "age", row.Age, "origin", row.Origin);
}
template <class Row>
std::string Identity(const Row& row)
{
    const std::string sRow = ShowRow(row);
    return sRow.substr(0, sRow.find(" metric"));
}

// Rows of the platform's tables; what a case does not say has values that the library never writes.

void Fill(MIB_IPFORWARDROW& row, const FakeRoute& route)
{
    auto* const pNumbers = reinterpret_cast<DWORD*>(&row); // it has nothing else
    std::iota(pNumbers, pNumbers + sizeof(row) / sizeof(*pNumbers), 20);
    row.dwForwardDest = ::inet_addr(route.sDestination.c_str());
    row.dwForwardMask = Mask(route.prefix);
    row.dwForwardNextHop = ::inet_addr(route.sNextHop.c_str());
    row.dwForwardIfIndex = route.dwIndex;
    row.dwForwardMetric1 = route.dwMetric;
}
void Fill(MIB_IPFORWARD_ROW2& row, const FakeRoute& route)
{
    row.InterfaceLuid.Value = 500;
    row.InterfaceIndex = route.dwIndex;
    row.DestinationPrefix = {Ip(route.sDestination).sockaddr(), route.prefix};
    row.NextHop = Ip(route.sNextHop).sockaddr();
    row.SitePrefixLength = 31;
    row.ValidLifetime = 100;
    row.PreferredLifetime = 200;
    row.Metric = route.dwMetric;
    row.Protocol = static_cast<NL_ROUTE_PROTOCOL>(32);
    row.Loopback = TRUE;
    row.Age = 33;
    row.Origin = static_cast<NL_ROUTE_ORIGIN>(2);
}
void Fill(MIB_IPADDRROW& row, const FakeAddress& address)
{
    row = {::inet_addr(address.sAddress.c_str()), address.dwIndex, Mask(address.prefix), 0, 0, 0, address.wType};
}
void Fill(MIB_UNICASTIPADDRESS_ROW& row, const FakeAddress& address)
{
    row.Address = Ip(address.sAddress).sockaddr();
    row.InterfaceIndex = address.dwIndex;
    row.PrefixOrigin = static_cast<NL_PREFIX_ORIGIN>(address.prefixOrigin);
    row.SuffixOrigin = static_cast<NL_SUFFIX_ORIGIN>(address.suffixOrigin);
    row.OnLinkPrefixLength = address.prefix;
    row.DadState = static_cast<NL_DAD_STATE>(address.dadState);
    row.ScopeId.Value = address.ulScope;
}

/// What a row of routes can hold.
template <class Row>
constexpr ADDRESS_FAMILY FAMILY = std::is_same_v<Row, MIB_IPFORWARDROW> ? AF_INET : AF_UNSPEC;

template <class Row, class Fake>
std::vector<Row> RowsOf(const std::vector<Fake>& fakes, ADDRESS_FAMILY family)
{
    std::vector<Row> rows;
    for (const Fake& fake : fakes)
        if (family == AF_UNSPEC || family == Ip(fake.OfFamily()).family())
            Fill(rows.emplace_back(), fake);
    return rows;
}

} // namespace

/// What the library finds in modules at run time. Its objects of the load keep these functions for good.
struct Exports
{
    static DWORD WINAPI ConvertInterfaceIndexToLuid(NET_IFINDEX index, NET_LUID* pLuid)
    {
        pLuid->Value = index * 1000ULL;
        return pCurrent->CodeOf("ConvertInterfaceIndexToLuid", Show("luid of", index));
    }
    static DWORD WINAPI GetIpForwardTable2(ADDRESS_FAMILY family, MIB_IPFORWARD_TABLE2** ppTable)
    {
        return pCurrent->Allocate("GetIpForwardTable2", family, RowsOf<MIB_IPFORWARD_ROW2>(pCurrent->routes, family),
                                  ppTable);
    }
    static DWORD WINAPI GetUnicastIpAddressTable(ADDRESS_FAMILY family, MIB_UNICASTIPADDRESS_TABLE** ppTable)
    {
        return pCurrent->Allocate("GetUnicastIpAddressTable", family,
                                  RowsOf<MIB_UNICASTIPADDRESS_ROW>(pCurrent->addresses, family), ppTable);
    }
    static void WINAPI FreeMibTable(void* pTable)
    {
        auto table = pCurrent->m_tables.extract(pTable);
        ASSERT_FALSE(table.empty()) << "what was not allocated is freed";
        std::fill(table.mapped().begin(), table.mapped().end(), static_cast<unsigned char>(0xDD));
        pCurrent->m_freed.push_back(std::move(table.mapped()));
    }
    static DWORD WINAPI CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2* pRow)
    {
        return pCurrent->Create("CreateIpForwardEntry2", *pRow, pRow->Metric);
    }
    static DWORD WINAPI DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2* pRow)
    {
        return pCurrent->Delete("DeleteIpForwardEntry2", *pRow);
    }
    static DWORD WINAPI GetTcp6Table(MIB_TCP6TABLE* pTable, ULONG* pulSize, BOOL bSort)
    {
        return pCurrent->Called("GetTcp6Table",
                                Show("tcp6", pTable != nullptr, std::exchange(*pulSize, 77), bSort != FALSE));
    }
    static DWORD WINAPI SetAdapterIpAddress(char* pszName, BOOL bDhcp, ULONG ulAddress, ULONG ulMask, ULONG ulGateway)
    {
        return pCurrent->CodeOf("SetAdapterIpAddress",
                                Show("set", pszName, bDhcp, Dotted(ulAddress), Dotted(ulMask), ulGateway));
    }
    static void WINAPI ShowDeviceProperties(HWND hwnd, HINSTANCE hInstance, const wchar_t* pszCommand, int iShow)
    {
        pCurrent->Called("", Show(hwnd || hInstance ? "owned" : "show", pszCommand, iShow));
    }
    static void Unused() { ADD_FAILURE() << "called, though it only has to be looked up"; }

    static FARPROC Find(const std::string& sName)
    {
        static const std::map<std::string, void*> ALL = {
            {"ConvertInterfaceIndexToLuid", reinterpret_cast<void*>(&ConvertInterfaceIndexToLuid)},
            {"GetIpForwardTable2", reinterpret_cast<void*>(&GetIpForwardTable2)},
            {"GetUnicastIpAddressTable", reinterpret_cast<void*>(&GetUnicastIpAddressTable)},
            {"FreeMibTable", reinterpret_cast<void*>(&FreeMibTable)},
            {"CreateIpForwardEntry2", reinterpret_cast<void*>(&CreateIpForwardEntry2)},
            {"DeleteIpForwardEntry2", reinterpret_cast<void*>(&DeleteIpForwardEntry2)},
            {"GetTcp6Table", reinterpret_cast<void*>(&GetTcp6Table)},
            {"SetAdapterIpAddress", reinterpret_cast<void*>(&SetAdapterIpAddress)},
            {"DeviceProperties_RunDLLW", reinterpret_cast<void*>(&ShowDeviceProperties)},
            {"CreateUnicastIpAddressEntry", reinterpret_cast<void*>(&Unused)},
            {"DeleteUnicastIpAddressEntry", reinterpret_cast<void*>(&Unused)},
            {"InitializeUnicastIpAddressEntry", reinterpret_cast<void*>(&Unused)}};
        const auto found = ALL.find(sName);
        return found != ALL.end() ? reinterpret_cast<FARPROC>(found->second) : nullptr;
    }
};

namespace
{

/// In force before the library's objects are built: the back end looks its functions up once, at load.
FARPROC FindAtLoad(HMODULE hModule, const char* pszName);
[[gnu::init_priority(101)]] const ImportPatch<decltype(&::GetProcAddress)> functionsAtLoad("GetProcAddress",
                                                                                           &FindAtLoad);
FARPROC FindAtLoad(HMODULE hModule, const char* pszName)
{
    const FARPROC pFound = Exports::Find(pszName);
    return pFound != nullptr ? pFound : functionsAtLoad.Original()(hModule, pszName);
}

} // namespace

std::vector<std::string> Words(const std::string& sText)
{
    std::istringstream stream(sText);
    return {std::istream_iterator<std::string>(stream), {}};
}

nlohmann::json StepsOf(const std::string& sSuite)
{
    return nlohmann::json::parse(ReadFileBytes(BesideProgram(L"golden") / sSuite / L"steps.json"));
}

std::vector<std::string> NamesIn(const nlohmann::json& groups)
{
    std::vector<std::string> names;
    for (const auto& group : groups.items())
        names.push_back(group.key());
    return names;
}

PlatformTest::PlatformTest() : m_uiHandles(CountHandles())
{
    pCurrent = this;
    ReplaceTables();
    ReplaceRoutesAndAddresses();
    ReplaceLoader();
    ReplaceDevices();
    ReplaceCommands();
    WarmUp();
    Begin();
}

PlatformTest::~PlatformTest()
{
    ExpectNothingOpen();
}

void PlatformTest::ExpectNothingOpen() const
{
    EXPECT_EQ(m_uiHandles, CountHandles()) << "handles are still open";
    EXPECT_TRUE(m_tables.empty()) << "a table is still allocated";
}

/// What the platform and the run time open for good when they are first used is no leak.
void PlatformTest::WarmUp()
{
    static bool bWarm = false;
    if (std::exchange(bWarm, true))
        return;
    TOLVA::NIC_INFO NicInfo = Adapter();
    NicInfo.sNicPci = L"warm";
    bool bAnswer = false;
    TOLVA::CanChangeAdapterOptions(NicInfo, bAnswer);
    EXPECT_STREQ(L"<invalid>", TextOf(Ip("none")).c_str());
    EXPECT_EQ(trace.Lines(), trace.Lines());
    m_uiHandles = CountHandles();
}

DWORD PlatformTest::Called(const std::string& sFunction, const std::string& sNote)
{
    m_sAsked += "> " + sNote + '\n';
    std::deque<DWORD>& forced = codes[sFunction];
    DWORD dwCode = TRUE_ANSWER;
    if (!forced.empty())
    {
        dwCode = forced.front();
        forced.pop_front();
    }
    else if (std::ranges::any_of(refused, [&](const auto& s) { return sNote.find(s) != std::string::npos; }))
        dwCode = ERROR_ACCESS_DENIED;
    ::SetLastError(dwCode);
    return dwCode;
}

void PlatformTest::Begin()
{
    m_sAsked.clear();
    trace.Empty();
}

void PlatformTest::WriteDown(const std::string& sTitle, const std::string& sAnswer)
{
    static const std::regex GUID("\\{0A1B2C3D-5E6F-4711-8123-9D0E1F2A3B4C\\}");
    static const std::regex FILE("\".:[^\"\n]*\\\\(TOL[0-9A-Fa-f]+\\.tmp)?\"");
    std::string sText = "== " + sTitle + "\n= " + sAnswer + '\n' + Asked();
    for (const std::string& sLine : trace.Lines())
        sText += sLine + '\n';
    sText.pop_back();
    golden->Line(std::regex_replace(std::regex_replace(sText, GUID, "<guid>"), FILE, "<file>"));
}

void PlatformTest::InNewProcess(const std::string& sPart, const std::function<void()>& body)
{
    const auto run = [&] {
        golden = std::make_unique<Golden>(sPart);
        body();
        golden.reset();
        m_keys.clear();
        trace.Empty();
        std::exit(HasFailure() ? 1 : 0);
    };
    const unsigned int uiBefore = CountHandles();
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
    m_uiHandles += CountHandles() - uiBefore; // what starting processes takes is not the library's
}

TOLVA::NIC_INFO PlatformTest::Adapter(const wchar_t* pszGuid)
{
    TOLVA::NIC_INFO NicInfo;
    NicInfo.sNicGuid = pszGuid;
    return NicInfo;
}

void PlatformTest::Seed(const std::wstring& sKey, const std::wstring& sName, const RegistryData& data)
{
    auto& key = m_keys[sKey];
    if (!key)
        key = std::make_unique<RegistryKeyScope>(sKey);
    if (data == MISSING)
        ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, sKey.c_str(), sName.c_str());
    else
        key->Set(L"", sName, data);
}

void PlatformTest::Arrange(const nlohmann::json& step)
{
    codes = step.value("codes", codes);
    refused = step.value("refused", refused);
    missing = step.value("missing", missing);
    oldAdapters = step.value("oldAdapters", oldAdapters);
    routes = step.value("routes", routes);
    addresses = step.value("addresses", addresses);
    ulIndex = step.value("index", ulIndex);
    dwLowestMetric = step.value("lowestMetric", dwLowestMetric);
    iFailWrite = step.value("failWrite", iFailWrite);
    if (step.contains("level"))
        TheTrace.SetTraceLevel(step["level"]);
    const auto registry = step.value("registry", nlohmann::json::object());
    for (const auto& [sKey, values] : registry.items())
        for (const auto& [sName, value] : values.items())
            Seed(Wide(sKey), Wide(sName), DataOf(value));
}

void PlatformTest::SeedAdapter()
{
    for (const auto& [pszName, pszText] : {std::pair(L"NetCfgInstanceId", GUID_A),
                                           {L"DriverDesc", L"Test Adapter"},
                                           {L"InfPath", L"oem1.inf"},
                                           {L"DeviceInstanceID", L"PCI\\VEN_8086&DEV_1"}})
        Seed(std::wstring(CLASS_KEY) + L"\\0007", pszName, StringData(pszText));
    Seed(std::wstring(DEVICE_CLASS_KEY) + L"\\##?#1", L"DeviceInstance", StringData(L"pci\\ven_8086&dev_1"));
}

IP_ADAPTER_ADDRESSES& PlatformTest::AddAdapter(DWORD dwIndex)
{
    IP_ADAPTER_ADDRESSES& record = adapters.emplace_back().record;
    record.IfIndex = dwIndex;
    record.Ipv6IfIndex = dwIndex;
    record.IfType = IF_TYPE_ETHERNET_CSMACD;
    record.OperStatus = IfOperStatusUp;
    return record;
}

DWORD PlatformTest::GetInterfaces(IP_INTERFACE_INFO* pTable, ULONG* pulSize)
{
    const auto ulNeeded = claimedSize.value_or(
        static_cast<ULONG>(offsetof(IP_INTERFACE_INFO, Adapter) + interfaces.size() * sizeof(IP_ADAPTER_INDEX_MAP)));
    const DWORD dwForced = Called("GetInterfaceInfo", pTable != nullptr ? "interfaces" : "interfaces' size");
    const ULONG ulGiven = *pulSize;
    if (dwForced == ERROR_INSUFFICIENT_BUFFER || pTable == nullptr || ulGiven < ulNeeded)
        *pulSize = ulNeeded;
    if (dwForced != TRUE_ANSWER && (dwForced != NO_ERROR || pTable == nullptr))
        return dwForced;
    if (pTable == nullptr || ulGiven < ulNeeded)
        return ERROR_INSUFFICIENT_BUFFER;
    const auto* pBytes = reinterpret_cast<const unsigned char*>(pTable);
    EXPECT_TRUE(std::all_of(pBytes, pBytes + ulGiven, [](unsigned char b) { return b == 0; }));
    if (ulGiven >= sizeof(LONG))
        pTable->NumAdapters = claimedInterfaces.value_or(static_cast<LONG>(interfaces.size()));
    for (std::size_t i = 0; !claimedSize && i < interfaces.size(); ++i)
    {
        IP_ADAPTER_INDEX_MAP& entry = pTable->Adapter[i];
        entry.Index = 0xBADBAD; // of no use to the library
        std::copy_n(interfaces[i].c_str(), std::min(interfaces[i].size() + 1, std::size(entry.Name)), entry.Name);
    }
    return NO_ERROR;
}

DWORD PlatformTest::GetAdapters(ULONG ulFamily, ULONG ulFlags, void* pReserved, IP_ADAPTER_ADDRESSES* pTable,
                                ULONG* pulSize)
{
    EXPECT_EQ(nullptr, pReserved);
    const DWORD dwForced =
        Called("GetAdaptersAddresses", Show("adapters of family", ulFamily, "flags", ulFlags, "into", *pulSize));
    const auto ulNeeded =
        adapters.empty() ? 0 : static_cast<ULONG>((adapters.size() - 1) * sizeof(*pTable)) + adapters.back().ulLength;
    const ULONG ulGiven = std::exchange(*pulSize, ulNeeded);
    if (dwForced != TRUE_ANSWER)
        return dwForced;
    if (adapters.empty())
        return ERROR_NO_DATA;
    if (ulGiven < ulNeeded)
        return ERROR_BUFFER_OVERFLOW;
    std::memset(static_cast<void*>(pTable), 0xA5, ulGiven);
    for (std::size_t i = 0; i < adapters.size(); ++i)
    {
        IP_ADAPTER_ADDRESSES record = adapters[i].record;
        record.Length = adapters[i].ulLength;
        record.Next = i + 1 < adapters.size() ? &pTable[i + 1] : nullptr;
        std::memcpy(static_cast<void*>(&pTable[i]), &record, record.Length);
    }
    return NO_ERROR;
}

/// A record for each adapter and each further address; their contexts count from 1.
DWORD PlatformTest::GetOldAdapters(IP_ADAPTER_INFO* pTable, ULONG* pulSize)
{
    const std::size_t count = oldAdapters.size();
    const DWORD dwForced = Called("GetAdaptersInfo", Show("old adapters into", *pulSize / sizeof(*pTable)));
    const ULONG ulGiven = std::exchange(*pulSize, static_cast<ULONG>(count * sizeof(*pTable)));
    if (dwForced != TRUE_ANSWER || ulGiven < *pulSize)
        return dwForced != TRUE_ANSWER ? dwForced : ERROR_BUFFER_OVERFLOW;
    std::memset(pTable, 0, *pulSize);
    IP_ADAPTER_INFO* pAdapter = pTable;
    for (std::size_t i = 0; i < count; ++i)
    {
        pTable[i].Index = oldAdapters[i].first;
        std::strcpy(pTable[i].IpAddressList.IpAddress.String, oldAdapters[i].second.c_str());
        pTable[i].IpAddressList.Context = static_cast<DWORD>(i + 1);
        if (oldAdapters[i].first == 0)
            pTable[i - 1].IpAddressList.Next = &pTable[i].IpAddressList;
        else if (i > 0)
            pAdapter = pAdapter->Next = &pTable[i];
    }
    return NO_ERROR;
}

void PlatformTest::ReplaceTables()
{
    ADD_PATCH(patches, GetInterfaceInfo, [this](auto... arguments) { return GetInterfaces(arguments...); });
    ADD_PATCH(patches, GetAdaptersAddresses, [this](auto... arguments) { return GetAdapters(arguments...); });
    ADD_PATCH(patches, GetAdaptersInfo, [this](auto... arguments) { return GetOldAdapters(arguments...); });
    ADD_PATCH(patches, GetAdapterIndex, [this](wchar_t* pszName, ULONG* pulIndex) -> DWORD {
        *pulIndex = ulIndex;
        return CodeOf("GetAdapterIndex", Show("index of", pszName));
    });
    ADD_PATCH(patches, GetIfEntry, [this](MIB_IFROW* pRow) -> DWORD {
        pRow->dwSpeed = dwSpeed;
        return CodeOf("GetIfEntry", Show("speed of", pRow->dwIndex));
    });
}

template <class Table, class Row>
DWORD PlatformTest::FillTable(const char* pszFunction, const std::vector<Row>& rows, Table* pTable, ULONG* pulSize,
                              BOOL bSort)
{
    EXPECT_EQ(pTable != nullptr, bSort != FALSE);
    const DWORD dwForced = Called(pszFunction, pszFunction);
    const auto ulNeeded = static_cast<ULONG>(offsetof(Table, table) + rows.size() * sizeof(Row));
    const ULONG ulGiven = std::exchange(*pulSize, ulNeeded);
    if (dwForced != TRUE_ANSWER)
        return dwForced;
    if (pTable == nullptr || ulGiven < ulNeeded)
        return ERROR_INSUFFICIENT_BUFFER;
    pTable->dwNumEntries = static_cast<DWORD>(rows.size());
    std::copy(rows.begin(), rows.end(), pTable->table);
    return NO_ERROR;
}

template <class Table, class Row>
DWORD PlatformTest::Allocate(const char* pszFunction, int family, const std::vector<Row>& rows, Table** ppTable)
{
    *ppTable = reinterpret_cast<Table*>(this); // a failure promises nothing of it
    if (const DWORD dwForced = Called(pszFunction, Show(pszFunction, "of family", family)); dwForced != TRUE_ANSWER)
        return dwForced;
    std::vector<unsigned char> bytes(offsetof(Table, Table) + rows.size() * sizeof(Row));
    *ppTable = reinterpret_cast<Table*>(bytes.data());
    (*ppTable)->NumEntries = static_cast<ULONG>(rows.size());
    std::copy(rows.begin(), rows.end(), (*ppTable)->Table);
    m_tables.emplace(*ppTable, std::move(bytes));
    return NO_ERROR;
}

template <class Row>
DWORD PlatformTest::Create(const char* pszFunction, const Row& row, DWORD dwMetric)
{
    if (const DWORD dwForced = Called(pszFunction, "create " + ShowRow(row)); dwForced != TRUE_ANSWER)
        return dwForced;
    if (dwMetric < dwLowestMetric)
        return ERROR_BAD_ARGUMENTS;
    const auto rows = RowsOf<Row>(routes, FAMILY<Row>);
    const bool bIsThere = std::ranges::any_of(rows, [&](const Row& r) { return Identity(r) == Identity(row); });
    return bIsThere || !m_created.insert(Identity(row)).second ? ERROR_OBJECT_ALREADY_EXISTS : NO_ERROR;
}

template <class Row>
DWORD PlatformTest::Delete(const char* pszFunction, const Row& row)
{
    if (const DWORD dwForced = Called(pszFunction, "delete " + ShowRow(row)); dwForced != TRUE_ANSWER)
        return dwForced;
    const auto IsThisRow = [&](const FakeRoute& route) {
        const auto rows = RowsOf<Row>(std::vector{route}, FAMILY<Row>);
        return !rows.empty() && ShowRow(rows[0]) == ShowRow(row);
    };
    return std::erase_if(routes, IsThisRow) + m_created.erase(Identity(row)) > 0 ? NO_ERROR : ERROR_NOT_FOUND;
}

void PlatformTest::ReplaceRoutesAndAddresses()
{
    ADD_PATCH(patches, GetIpForwardTable, [this](auto... arguments) {
        return FillTable("GetIpForwardTable", RowsOf<MIB_IPFORWARDROW>(routes, AF_INET), arguments...);
    });
    ADD_PATCH(patches, GetIpAddrTable, [this](auto... arguments) {
        return FillTable("GetIpAddrTable", RowsOf<MIB_IPADDRROW>(addresses, AF_INET), arguments...);
    });
    ADD_PATCH(patches, CreateIpForwardEntry,
              [this](MIB_IPFORWARDROW* pRow) { return Create("CreateIpForwardEntry", *pRow, pRow->dwForwardMetric1); });
    ADD_PATCH(patches, DeleteIpForwardEntry,
              [this](MIB_IPFORWARDROW* pRow) { return Delete("DeleteIpForwardEntry", *pRow); });
    ADD_PATCH(patches, DeleteIPAddress, [this](ULONG ulContext) -> DWORD {
        const auto& [dwIndex, sAddress] = oldAdapters.at(ulContext - 1);
        return CodeOf("DeleteIPAddress", Show("delete", ulContext, "which is", sAddress));
    });
}

void PlatformTest::ReplaceLoader()
{
    const auto IsWatched = [](const std::string& sName) { return sName == "IPHLPAPI.DLL" || sName == "DEVMGR.DLL"; };
    ADD_PATCH(patches, LoadLibraryW, [=, this](auto original, const wchar_t* pszName) -> HMODULE {
        const std::string sName = Show(pszName);
        if (!IsWatched(sName))
            return original(pszName);
        Called("LoadLibraryW", "load " + sName);
        ::SetLastError(ERROR_MOD_NOT_FOUND);
        if (missing.contains(sName))
            return nullptr;
        ++iModules;
        return original(L"IPHLPAPI.DLL"); // stands for the other one too
    });
    ADD_PATCH(patches, GetProcAddress, [this](auto original, HMODULE hModule, const char* pszName) -> FARPROC {
        if (Exports::Find(pszName) == nullptr)
            return original(hModule, pszName);
        Called("GetProcAddress", Show("look up", pszName));
        ::SetLastError(ERROR_PROC_NOT_FOUND);
        return missing.contains(pszName) ? nullptr : Exports::Find(pszName);
    });
    ADD_PATCH(patches, FreeLibrary, [this](auto original, HMODULE hModule) -> BOOL {
        --iModules;
        return original(hModule);
    });
}

void PlatformTest::ReplaceDevices()
{
    static const HDEVINFO SET = reinterpret_cast<HDEVINFO>(77);
    static constexpr DWORD DEVICE = 99;
    ADD_PATCH(patches, SetupDiGetClassDevsW,
              [this](const GUID* pClass, const wchar_t* pszEnumerator, HWND hwnd, DWORD dwFlags) {
                  EXPECT_TRUE(TOLVA::NIC_DEVICECLASS_GUID == *pClass && hwnd == nullptr);
                  const DWORD dwForced = Called("SetupDiGetClassDevs", Show("devices of", pszEnumerator, dwFlags));
                  return dwForced == TRUE_ANSWER ? SET : INVALID_HANDLE_VALUE;
              });
    ADD_PATCH(patches, SetupDiEnumDeviceInfo, [this](HDEVINFO hSet, DWORD dwMember, SP_DEVINFO_DATA* pDevice) -> BOOL {
        EXPECT_TRUE(hSet == SET && pDevice->cbSize == sizeof(*pDevice));
        pDevice->DevInst = DEVICE;
        return Called("SetupDiEnumDeviceInfo", Show("device", dwMember)) == TRUE_ANSWER;
    });
    ADD_PATCH(patches, SetupDiSetClassInstallParamsW,
              [this](HDEVINFO hSet, SP_DEVINFO_DATA* pDevice, SP_CLASSINSTALL_HEADER* pHeader, DWORD dwSize) -> BOOL {
                  EXPECT_TRUE(hSet == SET && pDevice->DevInst == DEVICE);
                  const auto& change = *reinterpret_cast<const SP_PROPCHANGE_PARAMS*>(pHeader);
                  const char* pszChange = change.StateChange == DICS_DISABLE ? "disable" : "enable";
                  return Called("SetupDiSetClassInstallParams",
                                Show(pszChange, change.StateChange, "scope", change.Scope, "profile", change.HwProfile,
                                     "function", pHeader->InstallFunction, "sizes", dwSize, pHeader->cbSize)) ==
                         TRUE_ANSWER;
              });
    ADD_PATCH(patches, SetupDiCallClassInstaller,
              [this](DI_FUNCTION function, HDEVINFO hSet, SP_DEVINFO_DATA* pDevice) -> BOOL {
                  EXPECT_TRUE(hSet == SET && pDevice->DevInst == DEVICE);
                  return Called("SetupDiCallClassInstaller", Show("install", function)) == TRUE_ANSWER;
              });
    ADD_PATCH(patches, SetupDiDestroyDeviceInfoList, [this](HDEVINFO hSet) -> BOOL {
        EXPECT_EQ(SET, hSet);
        Called("", "destroy the set");
        ::SetLastError(ERROR_INVALID_HANDLE);
        return TRUE;
    });
}

void PlatformTest::ReplaceCommands()
{
    ADD_PATCH(patches, Sleep, [this](DWORD dwTime) { Called("Sleep", Show("wait", dwTime)); });
    ADD_PATCH(patches, RegSetValueExW, [this, pSet = &::RegSetValueExW](auto... arguments) -> LSTATUS {
        return iFailWrite > 0 && --iFailWrite == 0 ? ERROR_ACCESS_DENIED : pSet(arguments...);
    });
    patches.Add<Spawn>("_wspawnlp", [this](int, auto... arguments) -> std::intptr_t {
        const wchar_t* const words[] = {arguments...};
        std::string sCommand = "run";
        for (const wchar_t* const* p = &words[3]; *p != nullptr && **p != L'>'; ++p)
            sCommand += ' ' + Show(*p);
        return static_cast<std::intptr_t>(CodeOf("_wspawnlp", sCommand));
    });
}

} // namespace testing_support
