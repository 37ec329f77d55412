// A DLL that uses ZELK_NM.DLL, so that the system loads and unloads the two together.

#include <cstdio>

#include <backends/abstract_network_api.h>
#include <zelk_nm/tolva.h>

#include "library_user.h"

namespace
{

template <class T>
T* Find(const wchar_t* pszModule, const char* pszName)
{
    const HMODULE hModule = ::GetModuleHandleW(pszModule);
    return hModule == nullptr ? nullptr
                              : reinterpret_cast<T*>(reinterpret_cast<void*>(::GetProcAddress(hModule, pszName)));
}

} // namespace

void UseEverything(char* pszAnswer, std::size_t size)
{
    TOLVA();
    velmor::string sVersion;
    TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_VERSION, sVersion);
    std::vector<TOLVA::NIC_INFO> list;
    TOLVA::GetAdapterList(list);
    std::size_t found = 0;
    for (const TOLVA::NIC_INFO& adapter : list)
    {
        unsigned long ulIndex = 0;
        found += TOLVA::GetAdapterIndex(adapter, ulIndex) && ulIndex != 0;
        std::vector<TOLVA::ROUTE_INFO> routes;
        TOLVA::GetAdapterRoutes(adapter, routes);
        std::vector<TOLVA::ASSOC_IP_ADDR> addresses;
        TOLVA::GetAdaptersIpAddrs(adapter, addresses);
    }

    // The back end loads further modules when it changes something. There is no such adapter.
    TOLVA::NIC_INFO NicInfo;
    NicInfo.sNicGuid = L"{UNLOAD}";
    NicInfo.sNicPci = L"PCI\\VEN 8086&DEV_1\\\"3";
    TOLVA::ASSOC_IP_ADDR IpAddr;
    IpAddr.IpAddress = velmor::ip_address(L"192.0.2.10");
    auto* const pBackEnd = *Find<AbstractNetworkAPI*>(L"ZELK_NM.DLL", "_ZN5TOLVA13m_pNetworkAPIE");
    pBackEnd->AddIpAddr(NicInfo, IpAddr);
    pBackEnd->SetDefaultGateway(NicInfo, IpAddr.IpAddress);

    const bool bShown = TOLVA::ChangeAdapterOptions(NicInfo);
    const auto* pszShown = Find<wchar_t>(L"DEVMGR.DLL", "ShownCommandLine");
    std::snprintf(pszAnswer, size, "%s lists %u %d %ls", sVersion.narrow_c_str(), static_cast<unsigned int>(found),
                  bShown, pszShown != nullptr ? pszShown : L"-");
}
