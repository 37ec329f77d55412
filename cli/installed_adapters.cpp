#include "installed_adapters.h"

#include <memory>
#include <type_traits>
#include <utility>

#include <cfgmgr32.h>

namespace zelkctl
{
namespace
{

constexpr const wchar_t* CONNECTIONS =
    L"SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}";

struct CloseKey
{
    void operator()(HKEY hKey) const noexcept { ::RegCloseKey(hKey); }
};
using UniqueKey = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseKey>;

UniqueKey OpenConnections()
{
    HKEY hKey = nullptr;
    ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, CONNECTIONS, 0, KEY_READ, &hKey);
    return UniqueKey(hKey);
}

velmor::string TextOf(const UniqueKey& key, const std::wstring& sSubKey, const wchar_t* pszValue)
{
    wchar_t text[512] = {};
    DWORD dwSize = sizeof(text);
    const LSTATUS rc = ::RegGetValueW(key.get(), sSubKey.c_str(), pszValue, RRF_RT_REG_SZ, nullptr, text, &dwSize);
    return rc == ERROR_SUCCESS ? text : L"";
}

} // namespace

std::vector<Adapter> ListInstalledAdapters()
{
    std::vector<Adapter> adapters;
    const UniqueKey key = OpenConnections();
    wchar_t name[256];
    for (DWORD dwIndex = 0; key && ::RegEnumKeyW(key.get(), dwIndex, name, 256) == ERROR_SUCCESS; ++dwIndex)
    {
        const std::wstring sConnection = std::wstring(name) + L"\\Connection";
        Adapter adapter;
        adapter.info.sNicGuid = name;
        adapter.info.sNicPci = TextOf(key, sConnection, L"PnpInstanceID");
        adapter.sIpconfigName = TextOf(key, sConnection, L"Name");
        if (!adapter.info.sNicPci.empty()) // other keys stand there too
            adapters.push_back(std::move(adapter));
    }
    return adapters;
}

std::optional<bool> IsDeviceStarted(const Adapter& adapter)
{
    std::wstring sInstance(adapter.info.sNicPci.c_str(), adapter.info.sNicPci.size());
    DEVINST device = 0;
    ULONG ulStatus = 0;
    ULONG ulProblem = 0;
    if (sInstance.empty() || ::CM_Locate_DevNodeW(&device, sInstance.data(), CM_LOCATE_DEVNODE_NORMAL) != CR_SUCCESS ||
        ::CM_Get_DevNode_Status(&ulStatus, &ulProblem, device, 0) != CR_SUCCESS)
        return std::nullopt;
    return (ulStatus & DN_STARTED) != 0 && ulProblem != CM_PROB_DISABLED;
}

} // namespace zelkctl
