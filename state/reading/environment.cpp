#include <state/reading/environment.h>

#include <algorithm>

#include <winsock2.h>

#include <windows.h>

#include <state/platform/registry_keys.h>
#include <state/reading/stored_key.h>

namespace zelk
{
namespace
{

/// Whether the token of this process has the rights of administrators, not only the user.
std::optional<bool> IsElevated(Reading& reading)
{
    BYTE administrators[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof(administrators);
    BOOL member = FALSE;
    if (::CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size) &&
        ::CheckTokenMembership(nullptr, administrators, &member))
        return member != FALSE;
    reading.Report(::GetLastError(), "CheckTokenMembership", "Whether this process is elevated is not known.");
    return std::nullopt;
}

} // namespace

void ReadEnvironment(Reading& reading)
{
    const SystemVersion& version = reading.Version();
    Environment& environment = reading.machine.environment;
    environment.majorVersion = version.major;
    environment.minorVersion = version.minor;
    environment.build = version.build;
    environment.servicePack = version.servicePack;
    environment.backEnd = version.IsVistaOrLater() ? BackEnd::VISTA : BackEnd::PRE_VISTA;
    environment.bootImage = std::ranges::any_of(BOOT_IMAGES, [](const wchar_t* key) { return HasKey(key); });
    environment.protocolBinding = HasKey(PROTOCOLS);
    environment.elevated = IsElevated(reading);
    StoredKey key(WINDOWS_VERSION, reading.machine.problems);
    environment.product = key.Text(L"ProductName").value;
}

} // namespace zelk
