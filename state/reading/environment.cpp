#include <state/reading/environment.h>

#include <algorithm>

#include <winsock2.h>

#include <windows.h>

#include <state/platform/elevation.h>
#include <state/platform/registry_keys.h>
#include <state/reading/stored_key.h>

namespace zelk
{
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
    environment.elevated = IsElevated();
    if (!environment.elevated)
        reading.Report(::GetLastError(), "CheckTokenMembership", "Whether this process is elevated is not known.");
    StoredKey key(WINDOWS_VERSION, reading.machine.problems);
    environment.product = key.Text(L"ProductName").value;
}

} // namespace zelk
