#include "system/elevation.h"

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{

bool IsElevated()
{
    BYTE administrators[SECURITY_MAX_SID_SIZE];
    DWORD dwSize = sizeof(administrators);
    BOOL bMember = FALSE;
    return ::CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators, &dwSize) &&
           ::CheckTokenMembership(nullptr, administrators, &bMember) && bMember;
}

} // namespace zelkctl
