#include "system/registry.h"

#include <memory>
#include <type_traits>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{
namespace
{

struct CloseKey
{
    void operator()(HKEY hKey) const noexcept { ::RegCloseKey(hKey); }
};
using UniqueKey = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseKey>;

UniqueKey OpenKey(const std::wstring& sKey)
{
    HKEY hKey = nullptr;
    ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, sKey.c_str(), 0, KEY_READ, &hKey);
    return UniqueKey(hKey);
}

} // namespace

bool KeyExists(const std::wstring& sKey)
{
    return OpenKey(sKey) != nullptr;
}

std::vector<std::wstring> SubKeys(const std::wstring& sKey)
{
    constexpr DWORD NAME_SIZE = 256;
    std::vector<std::wstring> names;
    const UniqueKey key = OpenKey(sKey);
    wchar_t name[NAME_SIZE];
    for (DWORD dwIndex = 0; key && ::RegEnumKeyW(key.get(), dwIndex, name, NAME_SIZE) == ERROR_SUCCESS; ++dwIndex)
        names.emplace_back(name);
    return names;
}

bool HasValue(const std::wstring& sKey, const wchar_t* pszValue)
{
    const UniqueKey key = OpenKey(sKey);
    return key && ::RegQueryValueExW(key.get(), pszValue, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

std::optional<velmor::string> ReadText(const std::wstring& sKey, const wchar_t* pszValue)
{
    wchar_t text[1024] = {};
    DWORD dwSize = sizeof(text);
    const LSTATUS rc = ::RegGetValueW(HKEY_LOCAL_MACHINE, sKey.c_str(), pszValue, RRF_RT_REG_SZ | RRF_NOEXPAND, nullptr,
                                      text, &dwSize);
    return rc == ERROR_SUCCESS ? std::optional<velmor::string>(text) : std::nullopt;
}

} // namespace zelkctl
