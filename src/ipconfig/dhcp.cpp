#include <ipconfig/remove_addresses.h>
#include <support/operation/adapter_operation.h>
#include <support/operation/family.h>
#include <support/operation/interface_key.h>
#include <support/registry/registry.h>
#include <support/registry/registry_paths.h>
#include <support/trace/call_frame.h>
#include <tools/wrap_ipconfig.h>
#include <zelk_nm/tolva.h>

namespace
{

/// What the driver does for one family, and how its failure is traced.
struct LeaseChange
{
    bool (*pChange)(const TOLVA::NIC_INFO& NicInfo);
    const char* pszFailure;
};

/// The record has been checked. A failure for IPv4 leaves IPv6 as it is.
bool ChangeLeases(const CallFrame& frame, const TOLVA::NIC_INFO& NicInfo, TOLVA::FAMILY_TYPE enFamilyType,
                  const LeaseChange& ipv4, const LeaseChange& ipv6)
{
    if (!CheckFamily(frame, enFamilyType))
        return false;
    if (IncludesIpv4(enFamilyType) && !ipv4.pChange(NicInfo))
        return frame.Fail(ipv4.pszFailure);
    if (IncludesIpv6(enFamilyType) && !ipv6.pChange(NicInfo))
        return frame.Fail(ipv6.pszFailure);
    return frame.Succeed();
}

/// The DHCP client looks at "EnableDHCP" when its adapter starts, so the device is restarted. The pause lets it be gone
/// before it is started again. A device that cannot be stopped or started does not end the operation; its failure is
/// traced by name alone.
void RestartAdapter(const CallFrame& frame, const TOLVA::NIC_INFO& NicInfo)
{
    constexpr DWORD PAUSE_MS = 500;
    if (!TOLVA::DisableAdapter(NicInfo))
        frame.Error("TOLVA::DisableAdapter");
    ::Sleep(PAUSE_MS);
    if (!TOLVA::EnableAdapter(NicInfo))
        frame.Error("TOLVA::EnableAdapter");
}

} // namespace

bool TOLVA::IsDhcpEnabled(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bDhcpEnabled)
{
    return RunOnAdapter("TOLVA::IsDhcpEnabled", NicInfo, [&](const CallFrame& frame) {
        frame.Verbose("NicInfo.sNicGuid", NicInfo.sNicGuid);
        if (!CheckFamily(frame, enFamilyType))
            return false;

        const velmor::Registry_System registry;
        bool bDhcp4Enabled = false;
        bool bDhcp6Enabled = false;
        DWORD dwValue = 0;
        if (IncludesIpv4(enFamilyType))
        {
            const velmor::string sTcpip4Key = InterfaceKey(frame, "sTcpip4Key", TCPIP_INTERFACES, NicInfo);
            if (!registry.GetDword(sTcpip4Key, L"EnableDHCP", dwValue))
                return frame.Fail("Get 'EnableDHCP' failed");
            bDhcp4Enabled = dwValue == 1;
            frame.Verbose("bDhcp4Enabled", bDhcp4Enabled);
        }
        if (IncludesIpv6(enFamilyType))
        {
            const velmor::string sTcpip6Key = InterfaceKey(frame, "sTcpip6Key", TCPIP6_INTERFACES, NicInfo);
            if (!registry.GetDword(sTcpip6Key, L"Dhcpv6State", dwValue))
                return frame.Fail("Get 'Dhcpv6State' failed");
            // A state and not, as for IPv4, a switch: only 0 means that DHCP does nothing.
            bDhcp6Enabled = dwValue != 0;
            frame.Verbose("bDhcp6Enabled", bDhcp6Enabled);
        }
        bDhcpEnabled = AnswerFor(enFamilyType, bDhcp4Enabled, bDhcp6Enabled);
        frame.Verbose("... ending", "bDhcpEnabled", bDhcpEnabled);
        return true;
    });
}

bool TOLVA::RenewDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType)
{
    return RunOnAdapter("TOLVA::RenewDhcp", NicInfo, [&](const CallFrame& frame) {
        return ChangeLeases(frame, NicInfo, enFamilyType,
                            {&Wrap_ipconfig::RenewDhcp4, "Wrap_ipconfig::RenewDhcp4 failed"},
                            {&Wrap_ipconfig::RenewDhcp6, "Wrap_ipconfig::RenewDhcp6 failed"});
    });
}

bool TOLVA::ReleaseDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType)
{
    return RunOperation("TOLVA::ReleaseDhcp", [&](const CallFrame& frame) {
        // The contract of this operation alone: a record that GetAdapterList has not filled may renew, not release. An
        // empty GUID shows when the connection's name is looked up.
        if (NicInfo.sNicName.empty())
            return frame.Fail("Bad NIC name");
        return ChangeLeases(frame, NicInfo, enFamilyType,
                            {&Wrap_ipconfig::ReleaseDhcp4, "Wrap_ipconfig::ReleaseDhcp4 failed"},
                            {&Wrap_ipconfig::ReleaseDhcp6, "Wrap_ipconfig::ReleaseDhcp6 failed"});
    });
}

bool TOLVA::ReturnToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType)
{
    return RunOnAdapter("TOLVA::ReturnToDhcp", NicInfo, [&](const CallFrame& frame) {
        if (!CheckFamily(frame, enFamilyType))
            return false;
        bool bDhcpEnabled = false;
        if (!IsDhcpEnabled(NicInfo, enFamilyType, bDhcpEnabled))
            return frame.Fail("TOLVA::IsDhcpEnabled failed");
        if (bDhcpEnabled)
        {
            frame.Ending(TRACE_WARNING, "Already using DHCP");
            return true;
        }

        std::vector<ASSOC_IP_ADDR> CurrentIpAddrs;
        if (!GetAdaptersIpAddrs(NicInfo, CurrentIpAddrs))
            return frame.Fail("TOLVA::GetAdaptersIpAddrs failed");
        // Where addresses are set, one that stays ends the operation. Here it does not: DHCP replaces it.
        if (!RemoveAddresses(frame, enFamilyType, CurrentIpAddrs, TraceRemoved::All,
                             [&](const ASSOC_IP_ADDR& IpAddr) { return DeleteIpAddr(NicInfo, IpAddr); }))
            frame.Ending(TRACE_VERBOSE, "One or more current IP addresses could not be removed");

        if (IncludesIpv4(enFamilyType) &&
            !velmor::Registry_System().SetDword(InterfaceKey(frame, "sTcpip4Key", TCPIP_INTERFACES, NicInfo),
                                                L"EnableDHCP", 1))
            return frame.Fail("Set 'EnableDHCP' failed");
        RestartAdapter(frame, NicInfo);
        if (!RenewDhcp(NicInfo, enFamilyType))
            return frame.Fail("TOLVA::RenewDhcp failed");
        return frame.Succeed();
    });
}
