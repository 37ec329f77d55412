#include "adapters/installed_adapters.h"

#include <utility>

#include <cfgmgr32.h>

#include "system/registry.h"

namespace zelkctl
{
std::vector<Adapter> ListInstalledAdapters()
{
    std::vector<Adapter> adapters;
    for (const std::wstring& sName : SubKeys(CONNECTIONS))
    {
        const std::wstring sConnection = CONNECTIONS + (L'\\' + sName) + L"\\Connection";
        Adapter adapter;
        adapter.info.sNicGuid = sName.c_str();
        adapter.info.sNicPci = ReadText(sConnection, L"PnpInstanceID").value_or(L"");
        adapter.sIpconfigName = ReadText(sConnection, L"Name").value_or(L"");
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
