#pragma once

#include <backends/abstract_network_api.h>
#include <support/platform/handles.h>
#include <support/trace/call_frame.h>

/// Vista and later: routes and addresses of both families through IP Helper's newer tables; addresses are changed by
/// `netsh`. The newer functions are looked up at run time, so that the library loads where they are missing; what needs
/// a missing one fails with code 1 (ERROR_INVALID_FUNCTION). Nothing is kept between calls.
class VistaAPI : public AbstractNetworkAPI
{
public:
    VistaAPI();

    bool GetAdapterRoutes(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ROUTE_INFO>& Routes) override;
    /// A route that exists already is success. A metric that the system refuses is raised until it is taken.
    bool AddAdapterRoute(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ROUTE_INFO& Route) override;
    bool GetAdaptersIpAddrs(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ASSOC_IP_ADDR>& IpAddrs) override;
    /// Deletes the adapter's default routes of the gateway's family and makes one through the gateway.
    bool SetDefaultGateway(const TOLVA::NIC_INFO& NicInfo, const velmor::ip_address& Gateway) override;
    bool AddIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr) override;
    bool DeleteIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr) override;
    unsigned long GetTcp6Table(MIB_TCP6TABLE* pTable, unsigned long* pulSize, bool bSort) override;

private:
    /// Tables that the platform has allocated go back to it: their memory is of no heap that the library knows.
    struct FreeTable
    {
        const VistaAPI* pApi = nullptr;
        void operator()(void* pTable) const noexcept;
    };
    template <class Table>
    using MibTable = velmor::UniqueHandle<Table*, FreeTable>;

    // Each calls the platform's function of the same name, or answers 1 where there is none.
    DWORD ConvertInterfaceIndexToLuid(NET_IFINDEX index, NET_LUID& luid) const noexcept;
    DWORD CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2& row) const noexcept;
    DWORD DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2& row) const noexcept;
    void FreeMibTable(void* pTable) const noexcept;
    DWORD GetIpForwardTable2(ADDRESS_FAMILY family, MIB_IPFORWARD_TABLE2*& pTable) const noexcept;
    /// Both families.
    DWORD GetUnicastIpAddressTable(MIB_UNICASTIPADDRESS_TABLE*& pTable) const noexcept;

    bool DeleteDefaultRoutes(const CallFrame& frame, unsigned long ulIndex, ADDRESS_FAMILY family, bool& bFound,
                             MIB_IPFORWARD_ROW2& first) const;
    bool FillNewDefaultRoute(const CallFrame& frame, unsigned long ulIndex, const velmor::ip_address& Gateway,
                             MIB_IPFORWARD_ROW2& row) const;

    decltype(&::ConvertInterfaceIndexToLuid) m_pConvertInterfaceIndexToLuid = nullptr;
    decltype(&::CreateUnicastIpAddressEntry) m_pCreateUnicastIpAddressEntry = nullptr;
    decltype(&::CreateIpForwardEntry2) m_pCreateIpForwardEntry2 = nullptr;
    decltype(&::DeleteIpForwardEntry2) m_pDeleteIpForwardEntry2 = nullptr;
    decltype(&::DeleteUnicastIpAddressEntry) m_pDeleteUnicastIpAddressEntry = nullptr;
    decltype(&::FreeMibTable) m_pFreeMibTable = nullptr;
    decltype(&::GetIpForwardTable2) m_pGetIpForwardTable2 = nullptr;
    decltype(&::GetUnicastIpAddressTable) m_pGetUnicastIpAddressTable = nullptr;
    decltype(&::InitializeUnicastIpAddressEntry) m_pInitializeUnicastIpAddressEntry = nullptr;
    decltype(&::GetTcp6Table) m_pGetTcp6Table = nullptr;
    velmor::UniqueModule m_hModule;
};
