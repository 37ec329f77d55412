#include "system/local_machine.h"

#include "system/handles.h"

namespace zelkctl
{

bool LocalMachineHas(const wchar_t* pszKey)
{
    HKEY hKey = nullptr;
    ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, pszKey, 0, KEY_READ, &hKey);
    return UniqueKey(hKey) != nullptr;
}

std::optional<std::wstring> LocalMachineText(const wchar_t* pszKey, const wchar_t* pszValue)
{
    wchar_t text[256] = {};
    DWORD dwSize = sizeof(text);
    const LSTATUS rc =
        ::RegGetValueW(HKEY_LOCAL_MACHINE, pszKey, pszValue, RRF_RT_REG_SZ | RRF_NOEXPAND, nullptr, text, &dwSize);
    return rc == ERROR_SUCCESS ? std::optional<std::wstring>(text) : std::nullopt;
}

} // namespace zelkctl
