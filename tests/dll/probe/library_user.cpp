// A DLL that uses ZELK_NM.DLL, so that the system loads and unloads the two together.

#include <cstdio>
#include <cwchar>
#include <iterator>

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

/// The GUID of an adapter of this machine, so that operations get further than to look for it.
velmor::string AnyAdapter()
{
    alignas(IP_INTERFACE_INFO) char buffer[16384];
    ULONG ulSize = sizeof(buffer);
    auto* const pTable = reinterpret_cast<IP_INTERFACE_INFO*>(buffer);
    if (::GetInterfaceInfo(pTable, &ulSize) != NO_ERROR || pTable->NumAdapters < 1)
        return L"{NONE}";
    return std::wcschr(pTable->Adapter[pTable->NumAdapters - 1].Name, L'{');
}

/// What the operations are given.
struct Arguments
{
    TOLVA::NIC_INFO NicInfo;
    TOLVA settings; ///< reads the level of the trace
    velmor::string sText;
    const velmor::string sHwAddr{L"01-02-03-04-05-06"};
    bool bFlag = false;
    unsigned long ulNumber = 0;
    double dSpeed = 0;
    TOLVA::FAMILY_TYPE enFamily = TOLVA::FAMILY_BOTH;
    TOLVA::TOLVA_OPER_STATUS enStatus = TOLVA::OPER_STATUS_UP;
    TOLVA::HARDWARE_ADDRESS HwAddr;
    velmor::ip_address Address{velmor::string(L"192.0.2.10")};
    velmor::ip_address Invalid{velmor::string(L"none")};
    std::vector<TOLVA::NIC_INFO> Adapters;
    std::vector<velmor::ip_address> Addresses{Address};
    std::vector<TOLVA::ASSOC_IP_ADDR> IpAddrs{1};
    TOLVA::ROUTE_INFO Route;
    std::vector<TOLVA::ROUTE_INFO> Routes;

    Arguments()
    {
        NicInfo.sNicGuid = AnyAdapter();
        NicInfo.sNicEnum = L"0000";
        NicInfo.sNicPci = L"PCI\\VEN 8086&DEV_1\\\"3";
    }
};

/// An operation whose result is right whatever it is; what counts is that it returns.
#define OPERATION(call)                                                                                                \
    {                                                                                                                  \
        "TOLVA::" #call, []([[maybe_unused]] Arguments& a) { return TOLVA::call, true; }                               \
    }
/// One that is wrong when the expression is false.
#define EXPECTATION(expression)                                                                                        \
    {                                                                                                                  \
#expression, []([[maybe_unused]] Arguments & a) { return expression; }                                         \
    }

constexpr struct
{
    const char* pszCall;
    bool (*pIsRight)(Arguments& a);
} OPERATIONS[] = {
    EXPECTATION((TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_DESCRIPTION, a.sText) == 0) == !a.sText.empty()),
    EXPECTATION(TOLVA::GetOwnDir(a.sText) == !a.sText.empty()),
    EXPECTATION(TOLVA::GetLogDir(a.sText) == !a.sText.empty()),
    EXPECTATION(TOLVA::GetTempFilename(a.sText) == (::DeleteFileW(a.sText.c_str()) != FALSE)),
    EXPECTATION(TOLVA::ConvertIpAddressToDword(a.Address) == 0xC000020A),
    EXPECTATION(TOLVA::ConvertIpAddressToDword(a.Invalid) == 0xFFFFFFFF),
    EXPECTATION(TOLVA::ConvertNetmaskToPrefix(TOLVA::ConvertPrefixToNetmask(24)) == 24),
    EXPECTATION(TOLVA::Convert_SOCKADDR_INET(TOLVA::Convert_SOCKADDR_INET(a.Address)) == a.Address),
    EXPECTATION(TOLVA::HARDWARE_ADDRESS(a.sHwAddr).size() == 6),
    OPERATION(GetModuleProperty(TOLVA::TOLVA_GMP_VERSION, a.sText)),
    {"TOLVA()", [](Arguments&) { return TOLVA(), true; }},
    OPERATION(GetAdapterList(a.Adapters)),
    OPERATION(GetAdapterIndex(a.NicInfo, a.ulNumber)),
    OPERATION(GetAdapterIpconfigName(a.NicInfo, a.sText)),
    OPERATION(GetAdapterOperStatus(a.NicInfo, a.enStatus)),
    OPERATION(AddressFamilySupported(a.NicInfo, a.enFamily)),
    OPERATION(GetHardwareAddress(a.NicInfo, a.HwAddr)),
    OPERATION(GetDhcpServer(a.NicInfo, a.Address)),
    OPERATION(GetDhcpServer(a.NicInfo, a.ulNumber, a.sText)),
    OPERATION(GetDnsServerList(a.NicInfo, a.Addresses)),
    OPERATION(CanChangeAdapterOptions(a.NicInfo, a.bFlag)),
    OPERATION(EnableAdapter(a.NicInfo)),
    OPERATION(DisableAdapter(a.NicInfo)),
    OPERATION(AdapterStateChange(1, 0, nullptr)),
    OPERATION(SetHardwareAddress(a.NicInfo, a.HwAddr)),
    OPERATION(ChangeAdapterOptions(a.NicInfo)),
    OPERATION(GetAdapterRoutes(a.NicInfo, a.Routes)),
    OPERATION(AddAdapterRoute(a.NicInfo, a.Route)),
    OPERATION(GetAdaptersIpAddrs(a.NicInfo, a.IpAddrs)),
    OPERATION(SetAdaptersIpAddrs(a.NicInfo, a.IpAddrs)),
    OPERATION(IsDhcpEnabled(a.NicInfo, a.enFamily, a.bFlag)),
    OPERATION(RenewDhcp(a.NicInfo, a.enFamily)),
    OPERATION(ReleaseDhcp(a.NicInfo, a.enFamily)),
    OPERATION(ReturnToDhcp(a.NicInfo, a.enFamily)),
    OPERATION(GetDefaultGatewayList(a.NicInfo, a.enFamily, a.Addresses)),
    OPERATION(SetDefaultGateway(a.NicInfo, a.Address)),
    OPERATION(IsGatewayAutomatic(a.NicInfo, a.enFamily, a.bFlag)),
    OPERATION(ReturnGatewayToDhcp(a.NicInfo, a.enFamily)),
    OPERATION(SetDnsServerList(a.NicInfo, a.Addresses)),
    OPERATION(IsDnsAutomatic(a.NicInfo, a.enFamily, a.bFlag)),
    OPERATION(ReturnDnsToDhcp(a.NicInfo, a.enFamily)),
    OPERATION(GetAdapterSpeed(a.NicInfo, a.sText)),
    OPERATION(GetAdapterLinkSpeed(a.NicInfo, a.dSpeed)),
    OPERATION(GetAdapterDomain(a.NicInfo, a.sText)),
    OPERATION(GetAutoconfigStatus(a.NicInfo, a.bFlag)),
    OPERATION(GetNetBIOSOverTcpipStatus(a.NicInfo, a.bFlag)),
    OPERATION(GetComputerNameW(a.sText)),
    OPERATION(GetPrimaryDnsSuffix(a.sText)),
    OPERATION(GetFullComputerName(a.sText)),
    OPERATION(GetWorkgroupName(a.sText)),
};

} // namespace

int CallOperation(unsigned int uiOperation, void (*pCount)(bool bBegin), const char** ppszCall)
{
    if (uiOperation >= std::size(OPERATIONS))
        return NO_OPERATION;
    const auto& operation = OPERATIONS[uiOperation];
    *ppszCall = operation.pszCall;
    Arguments arguments;
    int iResult = EXCEPTION_LEFT;
    try
    {
        pCount(true);
        iResult = operation.pIsRight(arguments) ? RIGHT : WRONG;
    }
    catch (...)
    {
    }
    pCount(false);
    return iResult;
}

void UseEverything(char* pszAnswer, std::size_t size)
{
    TOLVA();
    std::vector<TOLVA::NIC_INFO> list;
    TOLVA::GetAdapterList(list);
    for (const TOLVA::NIC_INFO& adapter : list)
    {
        std::vector<TOLVA::ROUTE_INFO> routes;
        TOLVA::GetAdapterRoutes(adapter, routes);
        std::vector<TOLVA::ASSOC_IP_ADDR> addresses;
        TOLVA::GetAdaptersIpAddrs(adapter, addresses);
    }

    // No exported operation changes an address yet, but the back end does. There is no such adapter.
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
    std::snprintf(pszAnswer, size, "%d %ls", bShown, pszShown != nullptr ? pszShown : L"-");
}
