#include "machine.h"

#include <cwchar>
#include <filesystem>
#include <utility>

#include <winsock2.h>

#include <windows.h>

#include <iphlpapi.h>

#include <support/operations.h>
#include <support/registry_scope.h>
#include <support/resources.h>

using namespace testing_support;

namespace
{

const std::wstring CONTROL_SET = L"SYSTEM\\CurrentControlSet\\";
const std::wstring NETWORK = L"\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\";

void Set(const std::wstring& sKey, const wchar_t* pszName, const RegistryData& data)
{
    ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, (CONTROL_SET + sKey).c_str(), pszName, data.dwType, data.bytes.data(),
                      static_cast<DWORD>(data.bytes.size()));
}

std::size_t CountFiles(const std::filesystem::path& folder)
{
    std::error_code none;
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder, none), std::filesystem::directory_iterator()));
}

bool IsTraceFree()
{
    struct
    {
        LONG lCount;
        BOOLEAN bOwnedByCaller, bAbandoned;
    } information = {};
    using Query = LONG WINAPI(HANDLE, int, void*, ULONG, ULONG*);
    static auto* const pQuery = reinterpret_cast<Query*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQueryMutant")));
    static const HANDLE hMutex = ::CreateMutexW(nullptr, FALSE, L"TOLVA_trace.log");
    return pQuery(hMutex, 0, &information, sizeof(information), nullptr) == 0 && information.lCount == 1;
}

} // namespace

std::wstring AdapterGuid()
{
    alignas(IP_INTERFACE_INFO) char buffer[16384];
    ULONG ulSize = sizeof(buffer);
    auto* const pTable = reinterpret_cast<IP_INTERFACE_INFO*>(buffer);
    if (::GetInterfaceInfo(pTable, &ulSize) != NO_ERROR || pTable->NumAdapters < 1)
        return {};
    return std::wcschr(pTable->Adapter[pTable->NumAdapters - 1].Name, L'{');
}

void SetUpAdapter(const std::wstring& sGuid)
{
    const std::wstring sClass = L"Control\\Class" + NETWORK + ADAPTER_KEY;
    Set(sClass, L"NetCfgInstanceId", StringData(sGuid));
    Set(sClass, L"DriverDesc", StringData(L"Card"));
    Set(sClass, L"DeviceInstanceID", StringData(ADAPTER_DEVICE));
    Set(sClass, L"*SpeedDuplex", StringData(L"0"));
    Set(sClass + L"\\Ndi\\params\\*SpeedDuplex\\Enum", L"0", StringData(L"Auto Negotiation"));
    Set(L"Control\\Network" + NETWORK + sGuid + L"\\Connection", L"Name", StringData(L"lan"));
    const std::wstring sIpv4 = L"services\\Tcpip\\Parameters\\Interfaces\\" + sGuid;
    Set(sIpv4, L"EnableDHCP", DwordData(1));
    Set(sIpv4, L"IPAutoconfigurationEnabled", DwordData(0));
    Set(sIpv4, L"Domain", StringData(L"example.com"));
    Set(sIpv4, L"NameServer", StringData(L"192.0.2.53"));
    Set(sIpv4, L"DefaultGateway", StringData({L"192.0.2.1\0", 10}, REG_MULTI_SZ));
    const std::wstring sIpv6 = L"services\\Tcpip6\\Parameters\\Interfaces\\" + sGuid;
    Set(sIpv6, L"Dhcpv6State", DwordData(0));
    Set(sIpv6, L"NameServer", StringData(L"2001:db8::53"));
    Set(L"services\\NetBT\\Parameters\\Interfaces\\Tcpip_" + sGuid, L"NetbiosOptions", DwordData(2));
    Set(L"Control\\DeviceClasses\\{AD498944-762F-11D0-8DCB-00C04FC3358C}\\##?#3", L"DeviceInstance",
        StringData(ADAPTER_DEVICE));
}

void SetWindows(const std::wstring& sProgram, const std::wstring& sWindows)
{
    ::RegSetKeyValueW(HKEY_CURRENT_USER, (L"Software\\Wine\\AppDefaults\\" + sProgram).c_str(), L"Version", REG_SZ,
                      sWindows.c_str(), static_cast<DWORD>((sWindows.size() + 1) * sizeof(wchar_t)));
}

Resources CountResources()
{
    const std::size_t files = CountFiles(L".") + CountFiles(L"temp"); // first, because it takes memory for a while
    const bool bTraceFree = IsTraceFree();
    return {CountHandles(), CountHeapBlocks(), files, bTraceFree};
}
