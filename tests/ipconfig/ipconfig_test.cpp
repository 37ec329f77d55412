#include "ipconfig_test.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
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

} // namespace

IpconfigTest* IpconfigTest::s_pCurrent;

/// What Vista's IP Helper exports, of the current test's platform.
struct NewerFunctions
{
    template <class Table, class Rows>
    static DWORD Allocate(const Rows& rows, Table** ppTable)
    {
        if (IpconfigTest::s_pCurrent->dwTableRc != NO_ERROR)
            return IpconfigTest::s_pCurrent->dwTableRc;
        *ppTable = static_cast<Table*>(std::malloc(offsetof(Table, Table) + rows.size() * sizeof(rows[0])));
        (*ppTable)->NumEntries = static_cast<ULONG>(rows.size());
        std::copy(rows.begin(), rows.end(), (*ppTable)->Table);
        ++IpconfigTest::s_pCurrent->m_iOpen;
        return NO_ERROR;
    }
    static DWORD GetAddresses(ADDRESS_FAMILY, MIB_UNICASTIPADDRESS_TABLE** ppTable)
    {
        return Allocate(IpconfigTest::s_pCurrent->unicast, ppTable);
    }
    static DWORD GetRoutes(ADDRESS_FAMILY, MIB_IPFORWARD_TABLE2** ppTable)
    {
        return Allocate(IpconfigTest::s_pCurrent->routes, ppTable);
    }
    static void Free(void* pTable)
    {
        --IpconfigTest::s_pCurrent->m_iOpen;
        std::free(pTable);
    }
    static DWORD FindLuid(NET_IFINDEX, NET_LUID*) { return NO_ERROR; }
    static DWORD CreateRoute(const MIB_IPFORWARD_ROW2* pRow)
    {
        IpconfigTest& test = *IpconfigTest::s_pCurrent;
        if (test.dwRouteRc == NO_ERROR)
            Append(test.m_sAsked, velmor::string(velmor::ip_address(pRow->NextHop)).narrow_c_str());
        return test.dwRouteRc;
    }
    static FARPROC Find(HMODULE hModule, const char* pszName);
};

namespace
{

/// In force before the library's objects are built: they look the newer functions up once.
[[gnu::init_priority(101)]] const ImportPatch<decltype(&::GetProcAddress)> newerFunctions("GetProcAddress",
                                                                                          &NewerFunctions::Find);

} // namespace

FARPROC NewerFunctions::Find(HMODULE hModule, const char* pszName)
{
    const std::pair<const char*, void*> functions[] = {
        {"GetUnicastIpAddressTable", reinterpret_cast<void*>(&GetAddresses)},
        {"GetIpForwardTable2", reinterpret_cast<void*>(&GetRoutes)},
        {"FreeMibTable", reinterpret_cast<void*>(&Free)},
        {"ConvertInterfaceIndexToLuid", reinterpret_cast<void*>(&FindLuid)},
        {"CreateIpForwardEntry2", reinterpret_cast<void*>(&CreateRoute)}};
    for (const auto& [pszFunction, pFunction] : functions)
        if (std::strcmp(pszName, pszFunction) == 0)
            return reinterpret_cast<FARPROC>(pFunction);
    return newerFunctions.Original()(hModule, pszName);
}

velmor::ip_address Ip(const char* pszAddress)
{
    return velmor::ip_address(velmor::string(pszAddress));
}

RegistryData ListData(const std::vector<std::wstring>& entries)
{
    std::wstring sAll;
    for (const std::wstring& sEntry : entries)
        sAll += sEntry + L'\0';
    return StringData(sAll, REG_MULTI_SZ);
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
    Replace<decltype(&::Sleep)>("Sleep", [this](DWORD dwTime) { Append(m_sAsked, "wait " + std::to_string(dwTime)); });
    Replace<decltype(&::RegSetValueExW)>(
        "RegSetValueExW", [this, pSetValue = &::RegSetValueExW](auto... arguments) -> LSTATUS {
            return iFailWrite > 0 && --iFailWrite == 0 ? ERROR_ACCESS_DENIED : pSetValue(arguments...);
        });
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

void IpconfigTest::AddAddress(const char* pszAddress, UINT8 prefix, DWORD dwIndex)
{
    MIB_UNICASTIPADDRESS_ROW& row = unicast.emplace_back();
    row.Address = Ip(pszAddress).sockaddr();
    row.InterfaceIndex = dwIndex;
    row.PrefixOrigin = IpPrefixOriginManual;
    row.SuffixOrigin = IpSuffixOriginManual;
    row.OnLinkPrefixLength = prefix;
    row.DadState = IpDadStatePreferred;
}

void IpconfigTest::AddRoute(const char* pszDestination, UINT8 prefix, const char* pszNextHop, DWORD dwIndex)
{
    MIB_IPFORWARD_ROW2& row = routes.emplace_back();
    row.InterfaceIndex = dwIndex;
    row.DestinationPrefix.Prefix = Ip(pszDestination).sockaddr();
    row.DestinationPrefix.PrefixLength = prefix;
    row.NextHop = Ip(pszNextHop).sockaddr();
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
