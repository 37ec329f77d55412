#include "ipconfig_test.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
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

std::string Without(std::string sText, std::initializer_list<std::string_view> parts)
{
    for (const std::string_view part : parts)
        if (const std::size_t at = sText.find(part); at != std::string::npos)
            sText.erase(at, part.size());
    return sText;
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
    {"10.0.0.1", 11, 16}, {"fe80::1", 11, 64}, {"10.0.0.7", 12, 8}, {"10.0.0.2", 11, 16}, {"fe80::2", 11, 64}};
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

/// The adapter and its IPv4 addresses, each with its place among all as context.
DWORD FillAdapters(IP_ADAPTER_INFO* pBuffer, ULONG* pulSize)
{
    const ULONG ulGiven = std::exchange(*pulSize, sizeof(IP_ADAPTER_INFO) * std::size(ADDRESSES));
    if (ulGiven < *pulSize)
        return ERROR_BUFFER_OVERFLOW;
    std::memset(pBuffer, 0, *pulSize);
    pBuffer->Index = ADDRESSES[0].dwIndex;
    IP_ADDR_STRING* pLast = &pBuffer->IpAddressList;
    for (DWORD i = 0; i < std::size(ADDRESSES); ++i)
    {
        if (ADDRESSES[i].dwIndex != pBuffer->Index || !Ip(ADDRESSES[i].pszAddress).is_ipv4())
            continue;
        IP_ADDR_STRING& address = pBuffer[i].IpAddressList;
        std::strcpy(address.IpAddress.String, ADDRESSES[i].pszAddress);
        address.Context = i;
        if (i > 0)
            pLast = pLast->Next = &address;
    }
    return NO_ERROR;
}

} // namespace

IpconfigTest* IpconfigTest::s_pCurrent;

/// What the library finds in IP Helper at run time, of the current test's platform.
struct FoundFunctions
{
    template <class Table, class Row>
    static DWORD Allocate(const std::vector<Row>& rows, Table** ppTable)
    {
        if (IpconfigTest::s_pCurrent->dwTableRc != NO_ERROR)
            return IpconfigTest::s_pCurrent->dwTableRc;
        *ppTable = static_cast<Table*>(std::malloc(offsetof(Table, Table) + rows.size() * sizeof(Row)));
        (*ppTable)->NumEntries = static_cast<ULONG>(rows.size());
        std::copy(rows.begin(), rows.end(), (*ppTable)->Table);
        ++IpconfigTest::s_pCurrent->m_iOpen;
        return NO_ERROR;
    }
    static DWORD GetAddresses(ADDRESS_FAMILY family, MIB_UNICASTIPADDRESS_TABLE** ppTable)
    {
        return Allocate(RowsOf<MIB_UNICASTIPADDRESS_ROW>(ADDRESSES, family), ppTable);
    }
    static DWORD GetRoutes(ADDRESS_FAMILY family, MIB_IPFORWARD_TABLE2** ppTable)
    {
        return Allocate(RowsOf<MIB_IPFORWARD_ROW2>(ROUTES, family), ppTable);
    }
    static void Free(void* pTable)
    {
        --IpconfigTest::s_pCurrent->m_iOpen;
        std::free(pTable);
    }
    static DWORD ChangeRoute(const char* pszChange, const MIB_IPFORWARD_ROW2& row)
    {
        const std::string sNextHop = velmor::string(velmor::ip_address(row.NextHop)).narrow_c_str();
        return IpconfigTest::s_pCurrent->IsTaken(pszChange + sNextHop) ? NO_ERROR : ERROR_ACCESS_DENIED;
    }
    static DWORD CreateRoute(const MIB_IPFORWARD_ROW2* pRow) { return ChangeRoute("via ", *pRow); }
    static DWORD DeleteRoute(const MIB_IPFORWARD_ROW2* pRow) { return ChangeRoute("not via ", *pRow); }
    static DWORD SetAddress(char* pszAdapter, BOOL bDhcp, ULONG ulAddress, ULONG ulMask, ULONG ulGateway)
    {
        EXPECT_EQ(std::wstring(GUID_A), std::wstring(pszAdapter, pszAdapter + std::strlen(pszAdapter)));
        EXPECT_TRUE(!bDhcp && ulGateway == 0);
        return IpconfigTest::s_pCurrent->IsTaken("ipv4 set " + Dotted(ulAddress) + ' ' + Dotted(ulMask))
                   ? NO_ERROR
                   : ERROR_INVALID_PARAMETER;
    }
    static FARPROC Find(HMODULE hModule, const char* pszName);
};

namespace
{

/// In force before the library's objects are built: they look functions up once.
[[gnu::init_priority(101)]] const ImportPatch<decltype(&::GetProcAddress)> foundFunctions("GetProcAddress",
                                                                                          &FoundFunctions::Find);

} // namespace

FARPROC FoundFunctions::Find(HMODULE hModule, const char* pszName)
{
    const std::pair<const char*, void*> functions[] = {
        {"GetUnicastIpAddressTable", reinterpret_cast<void*>(&GetAddresses)},
        {"GetIpForwardTable2", reinterpret_cast<void*>(&GetRoutes)},
        {"FreeMibTable", reinterpret_cast<void*>(&Free)},
        {"CreateIpForwardEntry2", reinterpret_cast<void*>(&CreateRoute)},
        {"DeleteIpForwardEntry2", reinterpret_cast<void*>(&DeleteRoute)},
        {"SetAdapterIpAddress", reinterpret_cast<void*>(&SetAddress)}};
    for (const auto& [pszFunction, pFunction] : functions)
        if (std::strcmp(pszName, pszFunction) == 0)
            return reinterpret_cast<FARPROC>(pFunction);
    return foundFunctions.Original()(hModule, pszName);
}

velmor::ip_address Ip(const char* pszAddress)
{
    return velmor::ip_address(velmor::string(pszAddress));
}

RegistryData ListData(const std::wstring& sEntry)
{
    return StringData(sEntry + L'\0', REG_MULTI_SZ);
}

IpconfigTest::IpconfigTest()
{
    s_pCurrent = this;
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
    ReplaceCommands();
    ReplaceOlderFunctions();
    ReplaceDevice();
}

IpconfigTest::~IpconfigTest()
{
    EXPECT_EQ(0, m_iOpen) << "tables or device sets that were not freed";
    while (!m_patches.empty())
        m_patches.pop_back();
}

bool IpconfigTest::IsTaken(const std::string& sRequest)
{
    Append(m_sAsked, sRequest);
    return std::none_of(refused.begin(), refused.end(),
                        [&](const std::string& sWord) { return sRequest.find(sWord) != std::string::npos; });
}

void IpconfigTest::ReplaceCommands()
{
    const auto pSpawn = reinterpret_cast<Spawn>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"msvcrt.dll"), "_wspawnlp")));
    Replace<Spawn>("_wspawnlp", [this, pSpawn](int iMode, auto... arguments) -> std::intptr_t {
        if (!sRecord.empty())
        {
            std::filesystem::remove(sRecord);
            const std::intptr_t iRc = pSpawn(iMode, arguments...);
            std::string sCommand = ReadFileBytes(sRecord);
            sCommand.erase(std::min(sCommand.find('\n'), sCommand.size()));
            Append(m_sAsked, sCommand.erase(sCommand.find_last_not_of(' ') + 1));
            return iRc;
        }
        const wchar_t* const words[] = {arguments...};
        std::string sCommand;
        for (const wchar_t* const* p = &words[3]; *p != nullptr && **p != L'>'; ++p)
            sCommand += ' ' + std::string(velmor::string(*p).narrow_c_str());
        return IsTaken(Without(sCommand, {" netsh interface ", " ipconfig ", " address", " \"LAN 2\"", " static",
                                          " unicast infinite infinite", " persistent"}))
                   ? 0
                   : 1;
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
    Replace<decltype(&::CreateIpForwardEntry)>("CreateIpForwardEntry", [this](MIB_IPFORWARDROW* pRow) -> DWORD {
        return IsTaken("via " + Dotted(pRow->dwForwardNextHop)) ? NO_ERROR : ERROR_ACCESS_DENIED;
    });
    Replace<decltype(&::DeleteIpForwardEntry)>("DeleteIpForwardEntry", [this](MIB_IPFORWARDROW* pRow) -> DWORD {
        return IsTaken("not via " + Dotted(pRow->dwForwardNextHop)) ? NO_ERROR : ERROR_ACCESS_DENIED;
    });
    Replace<decltype(&::GetAdaptersInfo)>("GetAdaptersInfo", &FillAdapters);
    Replace<decltype(&::DeleteIPAddress)>("DeleteIPAddress", [this](ULONG ulContext) -> DWORD {
        return IsTaken(std::string("ipv4 delete ") + ADDRESSES[ulContext].pszAddress) ? NO_ERROR : ERROR_ACCESS_DENIED;
    });
}

void IpconfigTest::ReplaceDevice()
{
    Replace<decltype(&::SetupDiGetClassDevsW)>("SetupDiGetClassDevsW",
                                               [this](auto, const wchar_t* pszDevice, auto...) -> HDEVINFO {
                                                   EXPECT_STREQ(L"PCI\\A", pszDevice);
                                                   ++m_iOpen;
                                                   return this;
                                               });
    Replace<decltype(&::SetupDiDestroyDeviceInfoList)>("SetupDiDestroyDeviceInfoList", [this](HDEVINFO) -> BOOL {
        --m_iOpen;
        return TRUE;
    });
    Replace<decltype(&::SetupDiEnumDeviceInfo)>("SetupDiEnumDeviceInfo", [](auto...) -> BOOL { return TRUE; });
    Replace<decltype(&::SetupDiSetClassInstallParamsW)>(
        "SetupDiSetClassInstallParamsW", [this](auto, auto, SP_CLASSINSTALL_HEADER* pHeader, auto) -> BOOL {
            m_dwNewState = reinterpret_cast<SP_PROPCHANGE_PARAMS*>(pHeader)->StateChange;
            return TRUE;
        });
    Replace<decltype(&::SetupDiCallClassInstaller)>("SetupDiCallClassInstaller", [this](auto...) -> BOOL {
        return IsTaken(m_dwNewState == DICS_DISABLE ? "disable" : m_dwNewState == DICS_ENABLE ? "enable" : "other");
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
    const std::wstring sKey = InterfaceKey(bIpv6);
    const std::size_t end = sKey.rfind(L'\\');
    return RegistryKeyScope(sKey.substr(0, end)).Get(sKey.substr(end + 1), pszName);
}

void IpconfigTest::RemoveKey(bool bIpv6) const
{
    EXPECT_EQ(0, ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, InterfaceKey(bIpv6).c_str()));
}

std::string IpconfigTest::Said(const std::string& sOperation) const
{
    constexpr std::size_t LEVEL = 4; // "[V] "
    constexpr std::string_view ADDRESS = " : sCurrentIpAddress = \"";
    std::string sSaid;
    for (std::string sLine : trace.Lines())
    {
        if (sLine.find(sOperation + " : ") != LEVEL ||
            (sLine[1] == 'V' && sLine.find(" : ... ending") == std::string::npos))
            continue;
        if (const std::size_t at = sLine.find(ADDRESS); at != std::string::npos && sLine.ends_with('"'))
            sLine.replace(at, std::string::npos,
                          '@' + sLine.substr(at + ADDRESS.size(), sLine.size() - at - ADDRESS.size() - 1));
        Append(sSaid, sLine.erase(LEVEL, sOperation.size() + 3));
    }
    return sSaid;
}

std::string IpconfigTest::Asked()
{
    trace.Empty();
    return std::exchange(m_sAsked, {});
}
