#include "installed.h"

#include <stdexcept>
#include <string>

#include <winsock2.h>

#include <windows.h>

#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>
#include <state/reading/read_machine.h>

namespace
{

constexpr wchar_t ENUMERATOR[] = L"SYSTEM\\CurrentControlSet\\Enum\\ROOT\\NET";
constexpr wchar_t NETWORK[] = L"{4D36E972-E325-11CE-BFC1-08002BE10318}";

void Write(const std::wstring& key, const wchar_t* name, const std::wstring& text, DWORD type = REG_SZ)
{
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    if (::RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, type, text.c_str(), size) != ERROR_SUCCESS)
        throw std::runtime_error("the registry cannot be prepared");
}

void Write(const std::wstring& key, const wchar_t* name, DWORD number)
{
    ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_DWORD, &number, sizeof(number));
}

void WriteDriver(const std::wstring& guid, const std::wstring& subkey)
{
    const std::wstring key = zelk::CLASS_KEY + (L'\\' + subkey);
    Write(key, L"NetCfgInstanceId", guid);
    Write(key, L"DriverDesc", L"Benchmark Adapter");
    Write(key, L"DriverVersion", L"1.2.3.4");
    Write(key, L"DriverDate", L"4-21-2022");
    Write(key, L"ProviderName", L"Velmor");
    Write(key, L"InfPath", L"oem0.inf");
    Write(key, L"Characteristics", 0x84);
    const std::wstring connection = zelk::CONNECTIONS + (L'\\' + guid) + L"\\Connection";
    Write(connection, L"Name", L"Ethernet " + subkey);
    Write(connection, L"PnpInstanceID", L"ROOT\\NET\\" + subkey);
    Write(zelk::LAN_DEVICES + (L'\\' + subkey), L"DeviceInstance", L"ROOT\\NET\\" + subkey);
    const std::wstring device = ENUMERATOR + (L'\\' + subkey);
    Write(device, L"ClassGUID", NETWORK);
    Write(device, L"DeviceDesc", L"Benchmark Adapter");
    Write(device, L"Driver", NETWORK + (L'\\' + subkey));
}

void WriteSettings(const std::wstring& guid)
{
    const std::wstring key = zelk::IPV4_INTERFACES + guid;
    for (const wchar_t* const name : {L"EnableDHCP", L"IPAutoconfigurationEnabled", L"LeaseObtainedTime",
                                      L"LeaseTerminatesTime", L"T1", L"T2", L"AddressType", L"Lease"})
        Write(key, name, 0);
    for (const wchar_t* const name : {L"NameServer", L"Domain", L"DhcpServer", L"DhcpIPAddress", L"DhcpSubnetMask"})
        Write(key, name, L"");
    Write(key, L"IPAddress", std::wstring(L"192.0.2.10") + L'\0', REG_MULTI_SZ);
    Write(key, L"SubnetMask", std::wstring(L"255.255.255.0") + L'\0', REG_MULTI_SZ);
    Write(key, L"DefaultGateway", std::wstring(L"192.0.2.1") + L'\0', REG_MULTI_SZ);
    Write(zelk::IPV6_INTERFACES + guid, L"Dhcpv6State", 0);
    Write(zelk::IPV6_INTERFACES + guid, L"NameServer", L"");
    Write(zelk::NETBIOS_INTERFACES + guid, L"NetbiosOptions", 0);
}

} // namespace

InstalledAdapters::InstalledAdapters()
{
    for (const zelk::Adapter& adapter : zelk::ReadMachine().adapters)
    {
        if (adapter.hidden || !adapter.guid)
            continue;
        const std::wstring guid = zelk::FromUtf8(adapter.guid->ToText());
        WriteDriver(guid, std::to_wstring(10000 + m_count++).substr(1));
        WriteSettings(guid);
    }
}

InstalledAdapters::~InstalledAdapters()
{
    const std::wstring keys[] = {zelk::CLASS_KEY,
                                 zelk::CONNECTIONS,
                                 zelk::LAN_DEVICES,
                                 ENUMERATOR,
                                 std::wstring(zelk::TCPIP_PARAMETERS) + L"\\Interfaces",
                                 L"SYSTEM\\CurrentControlSet\\services\\Tcpip6\\Parameters\\Interfaces",
                                 L"SYSTEM\\CurrentControlSet\\services\\NetBT\\Parameters\\Interfaces"};
    for (const std::wstring& key : keys)
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.c_str());
}
