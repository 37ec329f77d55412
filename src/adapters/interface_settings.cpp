#include <support/operation/adapter_operation.h>
#include <support/operation/interface_key.h>
#include <support/registry/registry.h>
#include <support/registry/registry_paths.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

namespace
{

constexpr const wchar_t* NETBT_INTERFACES = L"CurrentControlSet\\services\\NetBT\\Parameters\\Interfaces";
/// What the settings of automatic addressing and NetBIOS mean by "enabled"; missing values count as this one.
constexpr DWORD ENABLED = 1;

/// The adapter's own choice, or where it leaves it to DHCP, that of DHCP. Both values are 0 for the server's choice, 1
/// for enabled and 2 for disabled.
DWORD EffectiveNetbiosOptions(const velmor::Registry& registry, const velmor::string& sNetBtKey)
{
    constexpr DWORD LEFT_TO_DHCP = 0;
    DWORD dwOptions = LEFT_TO_DHCP;
    if (registry.GetDword(sNetBtKey, L"NetbiosOptions", dwOptions) && dwOptions != LEFT_TO_DHCP)
        return dwOptions;
    return registry.GetDword(sNetBtKey, L"DHCPNetbiosOptions", dwOptions) ? dwOptions : ENABLED;
}

} // namespace

bool TOLVA::GetAdapterDomain(const NIC_INFO& NicInfo, velmor::string& sDomain)
{
    return RunOnAdapter("TOLVA::GetAdapterDomain", NicInfo, [&](const CallFrame& frame) {
        const velmor::string sTcpip4Key = InterfaceKey(frame, "sTcpip4Key", TCPIP_INTERFACES, NicInfo);
        if (velmor::Registry_System().GetString(sTcpip4Key, L"Domain", sDomain))
            frame.Information("sDomain", sDomain);
        else
            sDomain = L"";
        return frame.Succeed();
    });
}

bool TOLVA::GetAutoconfigStatus(const NIC_INFO& NicInfo, bool& bIsAutoConfig)
{
    return RunOnAdapter("TOLVA::GetAutoconfigStatus", NicInfo, [&](const CallFrame& frame) {
        const velmor::string sTcpip4Key = InterfaceKey(frame, "sTcpip4Key", TCPIP_INTERFACES, NicInfo);
        DWORD dwAutoConfig = ENABLED;
        if (velmor::Registry_System().GetDword(sTcpip4Key, L"IPAutoconfigurationEnabled", dwAutoConfig))
            frame.Verbose("dwAutoConfig", dwAutoConfig);
        bIsAutoConfig = dwAutoConfig == ENABLED;
        frame.Information("bIsAutoConfig", bIsAutoConfig);
        return frame.Succeed();
    });
}

bool TOLVA::GetNetBIOSOverTcpipStatus(const NIC_INFO& NicInfo, bool& bUseNetBIOSOverTcpip)
{
    return RunOnAdapter("TOLVA::GetNetBIOSOverTcpipStatus", NicInfo, [&](const CallFrame& frame) {
        const velmor::string sNetBtKey = velmor::string(NETBT_INTERFACES) + L"\\Tcpip_" + NicInfo.sNicGuid;
        frame.Verbose("sNetBtKey", sNetBtKey);
        const DWORD dwNetbiosOptions = EffectiveNetbiosOptions(velmor::Registry_System(), sNetBtKey);
        frame.Verbose("dwNetbiosOptions", dwNetbiosOptions);
        bUseNetBIOSOverTcpip = dwNetbiosOptions == ENABLED;
        frame.Information("bUseNetBIOSOverTcpip", bUseNetBIOSOverTcpip);
        return frame.Succeed();
    });
}
