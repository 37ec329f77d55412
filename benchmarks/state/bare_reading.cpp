#include "bare_reading.h"

#include <string>
#include <vector>

#include <initguid.h>
#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>
#include <netioapi.h>
#include <windows.h>

#include <cfgmgr32.h>
#include <devguid.h>
#include <dsrole.h>
#include <setupapi.h>

namespace
{

const std::wstring CONTROL = L"SYSTEM\\CurrentControlSet\\Control\\";
const std::wstring SERVICES = L"SYSTEM\\CurrentControlSet\\services\\";
const std::wstring NETWORK = L"{4D36E972-E325-11CE-BFC1-08002BE10318}";
const std::wstring CLASS = CONTROL + L"Class\\" + NETWORK;
const std::wstring DEVICES = CONTROL + L"DeviceClasses\\{AD498944-762F-11D0-8DCB-00C04FC3358C}";

/// Opens the key, reads all its values, closes it; its "NetCfgInstanceId".
std::wstring AskForKey(const std::wstring& path)
{
    HKEY key = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return {};
    const auto Information = [key] {
        DWORD name = 0;
        DWORD data = 0;
        FILETIME time;
        ::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &name, &data, nullptr,
                           &time);
    };
    wchar_t name[256];
    alignas(wchar_t) BYTE data[4096];
    std::wstring guid;
    DWORD type = 0;
    Information();
    for (DWORD i = 0, length = 256, size = sizeof(data);
         ::RegEnumValueW(key, i, name, &length, nullptr, &type, data, &size) == ERROR_SUCCESS;
         ++i, length = 256, size = sizeof(data))
        if (std::wstring_view(name, length) == L"NetCfgInstanceId")
            guid = reinterpret_cast<const wchar_t*>(data);
    Information();
    ::RegCloseKey(key);
    return guid;
}

std::vector<std::wstring> Subkeys(const std::wstring& path)
{
    std::vector<std::wstring> names;
    HKEY key = nullptr;
    ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key);
    wchar_t name[256];
    for (DWORD i = 0, length = 256;
         ::RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS; ++i, length = 256)
        names.emplace_back(name, length);
    ::RegCloseKey(key);
    return names;
}

template <class Table, class Ask>
void AskForTable(Ask ask)
{
    Table* table = nullptr;
    if (ask(&table) == NO_ERROR)
        ::FreeMibTable(table);
}

void AskForTables()
{
    AskForTable<MIB_IF_TABLE2>(::GetIfTable2);
    constexpr ULONG FLAGS = GAA_FLAG_INCLUDE_PREFIX | GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST |
                            GAA_FLAG_INCLUDE_GATEWAYS | GAA_FLAG_INCLUDE_ALL_INTERFACES;
    ULONG size = 256 * 1024;
    std::vector<unsigned char> buffer(size);
    while (::GetAdaptersAddresses(AF_UNSPEC, FLAGS, nullptr, reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data()),
                                  &size) == ERROR_BUFFER_OVERFLOW)
        buffer.resize(size *= 2);
    constexpr ADDRESS_FAMILY FAMILIES[] = {AF_INET, AF_INET6};
    for (const ADDRESS_FAMILY family : FAMILIES)
        AskForTable<MIB_IPINTERFACE_TABLE>([=](auto** table) { return ::GetIpInterfaceTable(family, table); });
    for (const ADDRESS_FAMILY family : FAMILIES)
        AskForTable<MIB_IPFORWARD_TABLE2>([=](auto** table) { return ::GetIpForwardTable2(family, table); });
}

void AskForDevices()
{
    const HDEVINFO set = ::SetupDiGetClassDevsW(&GUID_DEVCLASS_NET, nullptr, nullptr, 0);
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof(device);
    wchar_t text[256];
    BYTE data[512];
    DWORD type = 0;
    DWORD size = 0;
    ULONG status = 0;
    ULONG problem = 0;
    for (DWORD i = 0; ::SetupDiEnumDeviceInfo(set, i, &device); ++i)
    {
        ::SetupDiGetDeviceInstanceIdW(set, &device, text, 256, nullptr);
        ::SetupDiGetDeviceRegistryPropertyW(set, &device, SPDRP_DEVICEDESC, &type, data, sizeof(data), &size);
        ::CM_Get_DevNode_Status(&status, &problem, device.DevInst, 0);
        ::SetupDiGetDeviceRegistryPropertyW(set, &device, SPDRP_DRIVER, &type, data, sizeof(data), &size);
    }
    ::SetupDiDestroyDeviceInfoList(set);
}

void AskForAdapters()
{
    std::vector<std::wstring> guids;
    for (const std::wstring& name : Subkeys(CLASS))
        guids.push_back(AskForKey(CLASS + L'\\' + name));
    AskForDevices();
    AskForKey(SERVICES + L"Tcpip\\Parameters");
    guids.emplace_back(L"{00000001-0000-0000-0000-4E6574446576}"); // the loopback
    for (const std::wstring& guid : guids)
    {
        AskForKey(CONTROL + L"Network\\" + NETWORK + L'\\' + guid + L"\\Connection");
        AskForKey(SERVICES + L"Tcpip\\Parameters\\Interfaces\\" + guid);
        AskForKey(SERVICES + L"Tcpip6\\Parameters\\Interfaces\\" + guid);
        AskForKey(SERVICES + L"NetBT\\Parameters\\Interfaces\\Tcpip_" + guid);
    }
    for (const std::wstring& name : Subkeys(DEVICES))
        AskForKey(DEVICES + L'\\' + name);
    AskForKey(SERVICES + L"Tcpip\\Parameters\\PersistentRoutes");
}

void AskForIdentity()
{
    for (const COMPUTER_NAME_FORMAT format :
         {ComputerNameDnsHostname, ComputerNameDnsDomain, ComputerNameDnsFullyQualified, ComputerNameNetBIOS})
    {
        wchar_t name[256];
        DWORD size = 256;
        ::GetComputerNameExW(format, name, &size);
    }
    BYTE* role = nullptr;
    if (::DsRoleGetPrimaryDomainInformation(nullptr, DsRolePrimaryDomainInfoBasic, &role) == NO_ERROR)
        ::DsRoleFreeMemory(role);
    AskForKey(CONTROL + L"ComputerName\\ComputerName");
}

void AskForEnvironment()
{
    for (const wchar_t* const name : {L"MiniNT", L"MyMiniNT"})
        AskForKey(CONTROL + name);
    BYTE administrators[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof(administrators);
    BOOL member = FALSE;
    ::CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size);
    ::CheckTokenMembership(nullptr, administrators, &member);
    AskForKey(L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion");
}

} // namespace

void AskForMachine()
{
    AskForRunningSystem();
    AskForIdentity();
}

void AskForRunningSystem()
{
    AskForEnvironment();
    AskForTables();
    AskForAdapters();
}
