#include <state/platform/elevation.h>

#include <winsock2.h>

#include <windows.h>

namespace zelk
{

std::optional<bool> IsElevated()
{
    BYTE administrators[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof(administrators);
    BOOL member = FALSE;
    if (::CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &size) &&
        ::CheckTokenMembership(nullptr, administrators, &member))
        return member != FALSE;
    return std::nullopt;
}

} // namespace zelk
