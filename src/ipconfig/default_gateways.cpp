#include <support/operation/adapter_operation.h>
#include <support/operation/family.h>
#include <support/operation/interface_key.h>
#include <support/registry/registry.h>
#include <support/registry/registry_paths.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

namespace
{

constexpr const wchar_t* DEFAULT_GATEWAY = L"DefaultGateway";

bool ForgetGateways(const CallFrame& frame, const char* pszVariable, const velmor::string& sInterfaces,
                    const TOLVA::NIC_INFO& NicInfo)
{
    const velmor::string sKey = InterfaceKey(frame, pszVariable, sInterfaces, NicInfo);
    if (!velmor::Registry_System().SetMultiString(sKey, DEFAULT_GATEWAY, {}))
        return frame.Fail("Set 'DefaultGateway' failed");
    return true;
}

} // namespace

/// The family is checked but filters nothing: callers are promised the gateways of both.
bool TOLVA::GetDefaultGatewayList(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType,
                                  std::vector<velmor::ip_address>& Gateways)
{
    return RunOnAdapter("TOLVA::GetDefaultGatewayList", NicInfo, [&](const CallFrame& frame) {
        if (!CheckFamily(frame, enFamilyType))
            return false;
        unsigned long ulIndex = 0;
        if (!FindIndex(frame, NicInfo, ulIndex))
            return false;
        std::vector<ROUTE_INFO> Routes;
        if (!GetAdapterRoutes(NicInfo, Routes))
            return frame.Fail("GetAdapterRoutes failed");
        for (const ROUTE_INFO& Route : Routes)
        {
            if (Route.ulIndex != ulIndex || Route.PrefixLength != 0)
                continue;
            Gateways.push_back(Route.NextHop);
            frame.Information("Added", "sNextHop", Route.NextHop);
        }
        return frame.Succeed();
    });
}

bool TOLVA::SetDefaultGateway(const NIC_INFO& NicInfo, const velmor::ip_address& Gateway)
{
    return RunOperation("TOLVA::SetDefaultGateway", [&](const CallFrame& frame) {
        if (!InstallDefaultGateway(NicInfo, Gateway))
            return frame.Fail("SetDefaultGateway failed");
        // The variables' transposed letters are what the log's readers know.
        const velmor::string sKey = Gateway.is_ipv4() ? InterfaceKey(frame, "sTcpi4pKey", TCPIP_INTERFACES, NicInfo)
                                                      : InterfaceKey(frame, "sTcpi6pKey", TCPIP6_INTERFACES, NicInfo);
        if (!velmor::Registry_System().SetMultiString(sKey, DEFAULT_GATEWAY, {Gateway}))
            return frame.FailAs("... ending( Set 'DefaultGateway' failed ) ");
        return frame.Succeed();
    });
}

bool TOLVA::IsGatewayAutomatic(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bIsAutomatic)
{
    return RunOnAdapter("TOLVA::IsGatewayAutomatic", NicInfo, [&](const CallFrame& frame) {
        if (!CheckFamily(frame, enFamilyType))
            return false;
        const velmor::Registry_System registry;
        bool bIpv4 = false;
        bool bIpv6 = false;
        if (IncludesIpv4(enFamilyType))
        {
            const velmor::string sKey = InterfaceKey(TCPIP_INTERFACES, NicInfo);
            std::vector<velmor::string> gateways;
            bIpv4 = !registry.GetMultiString(sKey, DEFAULT_GATEWAY, gateways) || gateways.empty();
        }
        if (IncludesIpv6(enFamilyType))
        {
            // As a single text, though SetDefaultGateway writes a list: callers are promised that an IPv6 gateway which
            // it has written counts as none.
            const velmor::string sKey = InterfaceKey(TCPIP6_INTERFACES, NicInfo);
            velmor::string sGateway;
            bIpv6 = !registry.GetString(sKey, DEFAULT_GATEWAY, sGateway) || sGateway.empty();
        }
        bIsAutomatic = AnswerFor(enFamilyType, bIpv4, bIpv6);
        frame.Verbose("bIsAutomatic", bIsAutomatic);
        return frame.Succeed();
    });
}

/// Routes stay as they are.
bool TOLVA::ReturnGatewayToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType)
{
    return RunOnAdapter("TOLVA::ReturnGatewayToDhcp", NicInfo, [&](const CallFrame& frame) {
        if (!CheckFamily(frame, enFamilyType))
            return false;
        // For IPv6 alone too: callers are promised that no static IPv4 gateway is left behind.
        if (!ForgetGateways(frame, "sTcpip4Key", TCPIP_INTERFACES, NicInfo))
            return false;
        if (IncludesIpv6(enFamilyType) && !ForgetGateways(frame, "sTcpip6Key", TCPIP6_INTERFACES, NicInfo))
            return false;
        return frame.Succeed();
    });
}
