#include "ipconfig_test.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <regex>
#include <span>
#include <sstream>
#include <utility>

using namespace testing_support;

namespace
{

/// The function that starts a command, with as many arguments as the library gives it.
template <std::size_t>
using Word = const wchar_t*;
template <std::size_t... Index>
auto SpawnOf(std::index_sequence<Index...>) -> std::intptr_t (*)(int, Word<Index>...);
using Spawn = decltype(SpawnOf(std::make_index_sequence<19>()));

std::wstring InterfaceKey(bool bIpv6)
{
    return std::wstring(L"SYSTEM\\CurrentControlSet\\services\\Tcpip") + (bIpv6 ? L"6" : L"") +
           L"\\Parameters\\Interfaces\\" + GUID_A;
}

void Append(std::string& sList, const std::string& sItem)
{
    sList += (sList.empty() ? "" : "; ") + sItem;
}

/// The address of a route is its next hop.
struct Entry
{
    const char* pszAddress;
    DWORD dwIndex;
    UINT8 prefix;
    const char* pszDestination = nullptr;
};
constexpr Entry ADDRESSES[] = {
    {"fe80::1", 11, 64}, {"fe80::2", 11, 64}, {"10.0.0.1", 11, 16}, {"10.0.0.2", 11, 16}, {"10.0.0.7", 12, 8}};
constexpr Entry ROUTES[] = {{"10.0.0.1", 11, 0, "0.0.0.0"},
                            {"10.0.0.2", 12, 0, "0.0.0.0"},
                            {"10.0.0.3", 11, 8, "10.0.0.0"},
                            {"10.0.0.4", 11, 0, "10.0.0.0"},
                            {"fe80::1", 11, 0, "::"}};

DWORD Mask(UINT8 prefix)
{
    return ::htonl(static_cast<DWORD>(0xFFFFFFFF00000000 >> prefix));
}

std::string Dotted(DWORD dwNetworkOrder)
{
    IN_ADDR address;
    address.s_addr = dwNetworkOrder;
    return ::inet_ntoa(address);
}

void Set(MIB_IPADDRROW& row, const Entry& entry)
{
    row = {::inet_addr(entry.pszAddress), entry.dwIndex, Mask(entry.prefix), 0, 0, 0, MIB_IPADDR_PRIMARY};
}
void Set(MIB_UNICASTIPADDRESS_ROW& row, const Entry& entry)
{
    row.Address = Ip(entry.pszAddress).sockaddr();
    row.InterfaceIndex = entry.dwIndex;
    row.OnLinkPrefixLength = entry.prefix;
}
void Set(MIB_IPFORWARDROW& row, const Entry& entry)
{
    row.dwForwardDest = ::inet_addr(entry.pszDestination);
    row.dwForwardMask = Mask(entry.prefix);
    row.dwForwardNextHop = ::inet_addr(entry.pszAddress);
    row.dwForwardIfIndex = entry.dwIndex;
}
void Set(MIB_IPFORWARD_ROW2& row, const Entry& entry)
{
    row.InterfaceIndex = entry.dwIndex;
    row.DestinationPrefix = {Ip(entry.pszDestination).sockaddr(), entry.prefix};
    row.NextHop = Ip(entry.pszAddress).sockaddr();
}

template <class Row>
std::vector<Row> RowsOf(std::span<const Entry> entries, ADDRESS_FAMILY family)
{
    std::vector<Row> rows;
    for (const Entry& entry : entries)
        if (family == AF_UNSPEC || (family == AF_INET) == Ip(entry.pszAddress).is_ipv4())
            Set(rows.emplace_back(), entry);
    return rows;
}

template <class Table, class Row>
DWORD FillOlderTable(DWORD dwForced, const std::vector<Row>& rows, Table* pTable, ULONG* pulSize)
{
    const auto ulNeeded = static_cast<ULONG>(offsetof(Table, table) + rows.size() * sizeof(Row));
    const ULONG ulGiven = std::exchange(*pulSize, ulNeeded);
    if (dwForced != NO_ERROR || ulGiven < ulNeeded)
        return dwForced != NO_ERROR ? dwForced : ERROR_INSUFFICIENT_BUFFER;
    pTable->dwNumEntries = static_cast<DWORD>(rows.size());
    std::copy(rows.begin(), rows.end(), pTable->table);
    return NO_ERROR;
}

// What the library finds in IP Helper at run time, of the current test's platform.

IpconfigTest* pCurrent;

template <class Table, class Row>
DWORD Allocate(const std::vector<Row>& rows, Table** ppTable)
{
    if (pCurrent->dwTableRc != NO_ERROR)
        return pCurrent->dwTableRc;
    *ppTable = static_cast<Table*>(std::malloc(offsetof(Table, Table) + rows.size() * sizeof(Row)));
    (*ppTable)->NumEntries = static_cast<ULONG>(rows.size());
    std::copy(rows.begin(), rows.end(), (*ppTable)->Table);
    ++pCurrent->iTables;
    return NO_ERROR;
}

FARPROC Find(HMODULE hModule, const char* pszName);
/// In force before the library's objects are built: they look functions up once.
[[gnu::init_priority(101)]] const ImportPatch<decltype(&::GetProcAddress)> foundFunctions("GetProcAddress", &Find);

FARPROC Find(HMODULE hModule, const char* pszName)
{
    constexpr auto GetAddresses = [](ADDRESS_FAMILY family, MIB_UNICASTIPADDRESS_TABLE** ppTable) {
        return Allocate(RowsOf<MIB_UNICASTIPADDRESS_ROW>(ADDRESSES, family), ppTable);
    };
    constexpr auto GetRoutes = [](ADDRESS_FAMILY family, MIB_IPFORWARD_TABLE2** ppTable) {
        return Allocate(RowsOf<MIB_IPFORWARD_ROW2>(ROUTES, family), ppTable);
    };
    constexpr auto Free = [](void* pTable) {
        --pCurrent->iTables;
        std::free(pTable);
    };
    static constexpr auto NextHop = [](const MIB_IPFORWARD_ROW2& row) {
        return std::string(velmor::string(velmor::ip_address(row.NextHop)).narrow_c_str());
    };
    constexpr auto CreateRoute = [](const MIB_IPFORWARD_ROW2* p) { return pCurrent->Answer("via " + NextHop(*p)); };
    constexpr auto DeleteRoute = [](const MIB_IPFORWARD_ROW2* p) { return pCurrent->Answer("not via " + NextHop(*p)); };
    constexpr auto SetAddress = [](const char* pszAdapter, BOOL bDhcp, ULONG ulAddress, ULONG ulMask, ULONG ulGateway) {
        EXPECT_TRUE(Text(pszAdapter) == GUID_A && !bDhcp && ulGateway == 0);
        return pCurrent->Answer("ipv4 set " + Dotted(ulAddress) + ' ' + Dotted(ulMask));
    };
    const std::pair<const char*, void*> functions[] = {
        {"GetUnicastIpAddressTable", reinterpret_cast<void*>(+GetAddresses)},
        {"GetIpForwardTable2", reinterpret_cast<void*>(+GetRoutes)},
        {"FreeMibTable", reinterpret_cast<void*>(+Free)},
        {"CreateIpForwardEntry2", reinterpret_cast<void*>(+CreateRoute)},
        {"DeleteIpForwardEntry2", reinterpret_cast<void*>(+DeleteRoute)},
        {"SetAdapterIpAddress", reinterpret_cast<void*>(+SetAddress)}};
    for (const auto& [pszFunction, pFunction] : functions)
        if (std::strcmp(pszName, pszFunction) == 0)
            return reinterpret_cast<FARPROC>(pFunction);
    return foundFunctions.Original()(hModule, pszName);
}

} // namespace

std::vector<std::string> Words(const std::string& sText)
{
    std::istringstream stream(sText);
    return {std::istream_iterator<std::string>(stream), {}};
}

IpconfigTest::IpconfigTest()
{
    pCurrent = this;
    NicInfo.sNicName = L"\\DEVICE\\TCPIP_A";
    NicInfo.sNicEnum = L"0007";
    NicInfo.sNicPci = L"PCI\\A";
    Seed(CONNECTION_KEY, L"Name", StringData(L"LAN 2"));
    Seed(InterfaceKey(false), L"", {});
    Seed(InterfaceKey(true), L"", {});
    Replace<decltype(&::Sleep)>("Sleep", [this](DWORD dwTime) { Append(m_sAsked, "wait " + std::to_string(dwTime)); });
    Replace<decltype(&::RegSetValueExW)>(
        "RegSetValueExW", [this, pSetValue = &::RegSetValueExW](auto... arguments) -> LSTATUS {
            return iFailWrite > 0 && --iFailWrite == 0 ? ERROR_ACCESS_DENIED : pSetValue(arguments...);
        });
    ReplaceCommandsAndDevice();
    ReplaceOlderFunctions();
}

DWORD IpconfigTest::Answer(const std::string& sRequest)
{
    Append(m_sAsked, sRequest);
    const bool bRefused = std::any_of(refused.begin(), refused.end(), [&](const std::string& sWord) {
        return sRequest.find(sWord) != std::string::npos;
    });
    return bRefused ? ERROR_ACCESS_DENIED : NO_ERROR;
}

void IpconfigTest::ReplaceCommandsAndDevice()
{
    static const std::regex SAME(
        " netsh interface | ipconfig | address| \"LAN 2\"| static| unicast infinite infinite| persistent");
    const auto pSpawn = reinterpret_cast<Spawn>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"msvcrt.dll"), "_wspawnlp")));
    Replace<Spawn>("_wspawnlp", [this, pSpawn](int iMode, auto... arguments) -> std::intptr_t {
        if (!sRecord.empty())
        {
            const std::intptr_t iRc = pSpawn(iMode, arguments...);
            const std::string sCommand = ReadFileBytes(sRecord);
            Append(m_sAsked, std::regex_replace(sCommand.substr(0, sCommand.find('\n')), std::regex(" +$"), ""));
            std::filesystem::remove(sRecord);
            return iRc;
        }
        const wchar_t* const words[] = {arguments...};
        std::string sCommand;
        for (const wchar_t* const* p = &words[3]; *p != nullptr && **p != L'>'; ++p)
            sCommand += ' ' + std::string(velmor::string(*p).narrow_c_str());
        return static_cast<std::intptr_t>(Answer(std::regex_replace(sCommand, SAME, "")));
    });
    Replace<decltype(&::SetupDiGetClassDevsW)>("SetupDiGetClassDevsW", [this](auto...) -> HDEVINFO { return this; });
    Replace<decltype(&::SetupDiDestroyDeviceInfoList)>("SetupDiDestroyDeviceInfoList",
                                                       [](auto) -> BOOL { return TRUE; });
    Replace<decltype(&::SetupDiEnumDeviceInfo)>("SetupDiEnumDeviceInfo", [](auto...) -> BOOL { return TRUE; });
    Replace<decltype(&::SetupDiCallClassInstaller)>("SetupDiCallClassInstaller", [](auto...) -> BOOL { return TRUE; });
    Replace<decltype(&::SetupDiSetClassInstallParamsW)>(
        "SetupDiSetClassInstallParamsW", [this](auto, auto, SP_CLASSINSTALL_HEADER* pHeader, auto) -> BOOL {
            const DWORD dwState = reinterpret_cast<SP_PROPCHANGE_PARAMS*>(pHeader)->StateChange;
            return Answer(dwState == DICS_DISABLE ? "disable" : dwState == DICS_ENABLE ? "enable" : "") == NO_ERROR;
        });
}

void IpconfigTest::ReplaceOlderFunctions()
{
    Replace<decltype(&::GetIpAddrTable)>("GetIpAddrTable", [this](auto* pTable, ULONG* pulSize, BOOL) {
        return FillOlderTable(dwTableRc, RowsOf<MIB_IPADDRROW>(ADDRESSES, AF_INET), pTable, pulSize);
    });
    Replace<decltype(&::GetIpForwardTable)>("GetIpForwardTable", [this](auto* pTable, ULONG* pulSize, BOOL) {
        return FillOlderTable(dwTableRc, RowsOf<MIB_IPFORWARDROW>(ROUTES, AF_INET), pTable, pulSize);
    });
    Replace<decltype(&::CreateIpForwardEntry)>("CreateIpForwardEntry", [this](MIB_IPFORWARDROW* pRow) {
        return Answer("via " + Dotted(pRow->dwForwardNextHop));
    });
    Replace<decltype(&::DeleteIpForwardEntry)>("DeleteIpForwardEntry", [this](MIB_IPFORWARDROW* pRow) {
        return Answer("not via " + Dotted(pRow->dwForwardNextHop));
    });
    Replace<decltype(&::GetAdaptersInfo)>("GetAdaptersInfo", [](IP_ADAPTER_INFO* pAdapter, ULONG*) -> DWORD {
        static IP_ADDR_STRING second = {nullptr, {"10.0.0.2"}, {}, 2};
        pAdapter->Index = 11;
        pAdapter->IpAddressList = {&second, {"10.0.0.1"}, {}, 1};
        return NO_ERROR;
    });
    Replace<decltype(&::DeleteIPAddress)>("DeleteIPAddress", [this](ULONG ulContext) {
        return Answer("ipv4 delete 10.0.0." + std::to_string(ulContext));
    });
}

void IpconfigTest::Store(bool bIpv6, const wchar_t* pszName, const RegistryData& data)
{
    if (data == MISSING)
        ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, InterfaceKey(bIpv6).c_str(), pszName);
    else
        Seed(InterfaceKey(bIpv6), pszName, data);
}

RegistryData IpconfigTest::Stored(bool bIpv6, const wchar_t* pszName) const
{
    return RegistryKeyScope(InterfaceKey(bIpv6)).Get(L"", pszName);
}

void IpconfigTest::RemoveKey(bool bIpv6) const
{
    EXPECT_EQ(0, ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, InterfaceKey(bIpv6).c_str()));
}

std::string IpconfigTest::Said(const std::string& sOperation) const
{
    constexpr std::size_t LEVEL = 4; // "[V] "
    static const std::regex ADDRESS(" : sCurrentIpAddress = \"(.*)\"$");
    std::string sSaid;
    for (std::string& sLine : trace.LinesOf(sOperation))
        if (sLine[1] != 'V' || sLine.find(" : ... ending") != std::string::npos)
            Append(sSaid, std::regex_replace(sLine.erase(LEVEL, sOperation.size() + 3), ADDRESS, "@$1"));
    return sSaid;
}

std::string IpconfigTest::Asked()
{
    trace.Empty();
    return std::exchange(m_sAsked, {});
}
