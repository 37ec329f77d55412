#include <backends/abstract_network_api.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

/// An operation that is the back end's: passes it on and reports the result.
template <class Call>
bool TOLVA::AskBackEnd(const char* pszName, Call&& call) noexcept
{
    return RunOperation(pszName, [&](const CallFrame& frame) {
        const bool bRc = m_pNetworkAPI != nullptr ? call(*m_pNetworkAPI) : frame.Fail("No back end");
        frame.Verbose("... ending", "bRc", bRc);
        return bRc;
    });
}

bool TOLVA::GetAdapterRoutes(const NIC_INFO& NicInfo, std::vector<ROUTE_INFO>& Routes)
{
    return AskBackEnd("TOLVA::GetAdapterRoutes",
                      [&](AbstractNetworkAPI& api) { return api.GetAdapterRoutes(NicInfo, Routes); });
}

bool TOLVA::AddAdapterRoute(const NIC_INFO& NicInfo, const ROUTE_INFO& Route)
{
    return AskBackEnd("TOLVA::AddAdapterRoute",
                      [&](AbstractNetworkAPI& api) { return api.AddAdapterRoute(NicInfo, Route); });
}

bool TOLVA::GetAdaptersIpAddrs(const NIC_INFO& NicInfo, std::vector<ASSOC_IP_ADDR>& IpAddrs)
{
    return AskBackEnd("TOLVA::GetAdaptersIpAddrs",
                      [&](AbstractNetworkAPI& api) { return api.GetAdaptersIpAddrs(NicInfo, IpAddrs); });
}

bool TOLVA::AddIpAddr(const NIC_INFO& NicInfo, const ASSOC_IP_ADDR& IpAddr)
{
    return AskBackEnd("TOLVA::AddIpAddr", [&](AbstractNetworkAPI& api) { return api.AddIpAddr(NicInfo, IpAddr); });
}

bool TOLVA::DeleteIpAddr(const NIC_INFO& NicInfo, const ASSOC_IP_ADDR& IpAddr)
{
    return AskBackEnd("TOLVA::DeleteIpAddr",
                      [&](AbstractNetworkAPI& api) { return api.DeleteIpAddr(NicInfo, IpAddr); });
}

bool TOLVA::InstallDefaultGateway(const NIC_INFO& NicInfo, const velmor::ip_address& Gateway)
{
    return m_pNetworkAPI != nullptr && m_pNetworkAPI->SetDefaultGateway(NicInfo, Gateway);
}

unsigned long TOLVA::GetTcp6Table(MIB_TCP6TABLE* pTcpTable, unsigned long& ulSize, bool bSort)
{
    const CallFrame frame("TOLVA::GetTcp6Table");
    const unsigned long ulRc =
        m_pNetworkAPI != nullptr ? m_pNetworkAPI->GetTcp6Table(pTcpTable, &ulSize, bSort) : ERROR_INVALID_FUNCTION;
    frame.Verbose("... ending", "ulRc", ulRc);
    return ulRc;
}
