#include <support/operation/adapter_operation.h>
#include <support/operation/family.h>
#include <support/operation/interface_key.h>
#include <support/registry/registry.h>
#include <support/registry/registry_paths.h>
#include <support/trace/call_frame.h>
#include <tools/wrap_netsh.h>
#include <zelk_nm/tolva.h>

namespace
{

constexpr const wchar_t* NAME_SERVER = L"NameServer";

using IsOfFamily = bool (velmor::ip_address::*)() const;

/// The texts of the addresses of one family, joined by commas: of the two separators that the system takes in
/// "NameServer" the one that it writes itself.
velmor::string Join(const std::vector<velmor::ip_address>& addresses, IsOfFamily pIsOfFamily)
{
    velmor::string sList;
    for (const velmor::ip_address& address : addresses)
    {
        if (!(address.*pIsOfFamily)())
            continue;
        if (!sList.empty())
            sList += L",";
        sList += address;
    }
    return sList;
}

/// Written also when it is empty: the list replaces that of both families.
bool WriteServers(const CallFrame& frame, const velmor::string& sKey, const char* pszVariable,
                  const velmor::string& sServers)
{
    frame.Verbose(pszVariable, sServers);
    if (!velmor::Registry_System().SetString(sKey, NAME_SERVER, sServers))
        return frame.Fail("Set 'NameServer' failed");
    return true;
}

bool IsAutomatic(const velmor::string& sInterfaces, const TOLVA::NIC_INFO& NicInfo)
{
    velmor::string sServers;
    return !velmor::Registry_System().GetString(InterfaceKey(sInterfaces, NicInfo), NAME_SERVER, sServers) ||
           sServers.empty();
}

bool ForgetServers(const CallFrame& frame, const char* pszVariable, const velmor::string& sInterfaces,
                   const TOLVA::NIC_INFO& NicInfo)
{
    const velmor::string sKey = InterfaceKey(frame, pszVariable, sInterfaces, NicInfo);
    if (!velmor::Registry_System().SetString(sKey, NAME_SERVER, L""))
        return frame.FailAs("... ending( Set 'NameServer' failed  )"); // two blanks, as the log has it
    return true;
}

} // namespace

bool TOLVA::SetDnsServerList(const NIC_INFO& NicInfo, const std::vector<velmor::ip_address>& DnsServerList)
{
    return RunOnAdapter("TOLVA::SetDnsServerList", NicInfo, [&](const CallFrame& frame) {
        if (DnsServerList.empty())
        {
            frame.Ending(TRACE_WARNING, "No DNS server addresses");
            return true;
        }

        const velmor::string sTcpip4Key = InterfaceKey(TCPIP_INTERFACES, NicInfo);
        frame.Verbose("IPv4", "sTcpipKey", sTcpip4Key);
        if (!WriteServers(frame, sTcpip4Key, "sDnsServer4", Join(DnsServerList, &velmor::ip_address::is_ipv4)))
            return false;
        const velmor::string sTcpip6Key = InterfaceKey(TCPIP6_INTERFACES, NicInfo);
        frame.Verbose("IPv6", "sTcpipKey", sTcpip6Key);
        if (!WriteServers(frame, sTcpip6Key, "sDnsServer6", Join(DnsServerList, &velmor::ip_address::is_ipv6)))
            return false;

        // The command takes one server; the others reach the system through the registry.
        if (!Wrap_netsh::SetDnsAddr(NicInfo, DnsServerList.front()))
            return frame.Fail("netsh set dnsserver failed");
        return frame.Succeed();
    });
}

bool TOLVA::IsDnsAutomatic(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bIsAutomatic)
{
    return RunOnAdapter("TOLVA::IsDnsAutomatic", NicInfo, [&](const CallFrame& frame) {
        // Callers are promised an answer for a value that is no family, too: nothing is automatic for it.
        const bool bIpv4 = IncludesIpv4(enFamilyType) && IsAutomatic(TCPIP_INTERFACES, NicInfo);
        const bool bIpv6 = IncludesIpv6(enFamilyType) && IsAutomatic(TCPIP6_INTERFACES, NicInfo);
        bIsAutomatic = AnswerFor(enFamilyType, bIpv4, bIpv6);
        frame.Verbose("bIsAutomatic", bIsAutomatic);
        return frame.Succeed();
    });
}

bool TOLVA::ReturnDnsToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType)
{
    return RunOnAdapter("TOLVA::ReturnDnsToDhcp", NicInfo, [&](const CallFrame& frame) {
        // Not CheckFamily: the log has other words for this operation's refusal, and no line for a family that is fine.
        if (FamilyText(enFamilyType) == nullptr)
            return frame.Fail("Unknown family type", "enFamilyType", enFamilyType);
        if (IncludesIpv4(enFamilyType) && !ForgetServers(frame, "sTcpip4Key", TCPIP_INTERFACES, NicInfo))
            return false;
        if (IncludesIpv6(enFamilyType) && !ForgetServers(frame, "sTcpip6Key", TCPIP6_INTERFACES, NicInfo))
            return false;
        return frame.Succeed();
    });
}
