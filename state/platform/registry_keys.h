#pragma once

// Where Windows keeps what this library reads, below HKEY_LOCAL_MACHINE.

#define ZELK_NETWORK_CLASS L"{4D36E972-E325-11CE-BFC1-08002BE10318}"
#define ZELK_CONTROL L"SYSTEM\\CurrentControlSet\\Control\\"
#define ZELK_SERVICES L"SYSTEM\\CurrentControlSet\\services\\"

namespace zelk
{

/// A subkey for each installed adapter, such as "0007": its driver.
inline constexpr wchar_t CLASS_KEY[] = ZELK_CONTROL L"Class\\" ZELK_NETWORK_CLASS;
/// A subkey for each connection, named by its adapter's GUID.
inline constexpr wchar_t CONNECTIONS[] = ZELK_CONTROL L"Network\\" ZELK_NETWORK_CLASS;
/// A subkey for each device that exposes the LAN device interface.
inline constexpr wchar_t LAN_DEVICES[] = ZELK_CONTROL L"DeviceClasses\\{AD498944-762F-11D0-8DCB-00C04FC3358C}";
inline constexpr wchar_t COMPUTER_NAME[] = ZELK_CONTROL L"ComputerName\\ComputerName";
inline constexpr const wchar_t* BOOT_IMAGES[] = {ZELK_CONTROL L"MiniNT", ZELK_CONTROL L"MyMiniNT"};

inline constexpr wchar_t TCPIP_PARAMETERS[] = ZELK_SERVICES L"Tcpip\\Parameters";
/// Its values' names are routes.
inline constexpr wchar_t PERSISTENT_ROUTES[] = ZELK_SERVICES L"Tcpip\\Parameters\\PersistentRoutes";
/// A subkey for each adapter, named by its GUID.
inline constexpr wchar_t IPV4_INTERFACES[] = ZELK_SERVICES L"Tcpip\\Parameters\\Interfaces\\";
inline constexpr wchar_t IPV6_INTERFACES[] = ZELK_SERVICES L"Tcpip6\\Parameters\\Interfaces\\";
inline constexpr wchar_t NETBIOS_INTERFACES[] = ZELK_SERVICES L"NetBT\\Parameters\\Interfaces\\Tcpip_";

/// Where INetCfg keeps the protocols that can be bound to adapters.
inline constexpr wchar_t PROTOCOLS[] = ZELK_CONTROL L"Network\\{4D36E975-E325-11CE-BFC1-08002BE10318}";

inline constexpr wchar_t WINDOWS_VERSION[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

} // namespace zelk

#undef ZELK_NETWORK_CLASS
#undef ZELK_CONTROL
#undef ZELK_SERVICES
