#include <state/platform/system_version.h>

#include <state/platform/function.h>
#include <state/platform/utf8.h>

namespace zelk
{

SystemVersion GetSystemVersion()
{
    using RtlGetVersion = LONG WINAPI(OSVERSIONINFOW*);
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    // Has no import library everywhere, and is there on every system.
    if (auto* const getVersion = FindFunction<RtlGetVersion>(L"ntdll.dll", "RtlGetVersion"))
        getVersion(&version);
    return {version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber, ToUtf8(version.szCSDVersion)};
}

} // namespace zelk
