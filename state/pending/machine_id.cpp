#include <state/pending/machine_id.h>

#include <array>

#include <winsock2.h>

#include <windows.h>

#include <state/platform/handles.h>
#include <state/platform/utf8.h>

namespace zelk
{

std::string MachineId()
{
    HKEY opened = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Cryptography", 0, KEY_QUERY_VALUE, &opened) !=
        ERROR_SUCCESS)
        return {};
    const UniqueKey key(opened);
    std::array<wchar_t, 64> text = {};
    DWORD size = sizeof(text) - sizeof(wchar_t); // the text may lack its terminator
    DWORD type = REG_NONE;
    const LSTATUS code =
        ::RegQueryValueExW(key.get(), L"MachineGuid", nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size);
    return code == ERROR_SUCCESS && type == REG_SZ ? ToUtf8(text.data()) : std::string();
}

} // namespace zelk
