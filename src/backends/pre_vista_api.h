#pragma once

#include <backends/abstract_network_api.h>

/// Systems before Vista: IPv4 only, through the old tables of IP Helper.
///
/// Each operation reads its table on its first use and never again: later calls in the process work on those rows. One
/// caller at a time.
class PreVistaAPI : public AbstractNetworkAPI
{
public:
    bool GetAdapterRoutes(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ROUTE_INFO>& Routes) override;
    /// IPv4 routes only. A metric that the system refuses is raised until it is taken.
    bool AddAdapterRoute(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ROUTE_INFO& Route) override;
    /// True whatever happens, but for an adapter without a GUID.
    bool GetAdaptersIpAddrs(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ASSOC_IP_ADDR>& IpAddrs) override;
    /// Deletes the adapter's default routes and makes one through the gateway.
    bool SetDefaultGateway(const TOLVA::NIC_INFO& NicInfo, const velmor::ip_address& Gateway) override;
    /// Replaces the adapter's address. An IPv6 address is passed over, successfully.
    bool AddIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr) override;
    /// An address that the adapter does not have is deleted already.
    bool DeleteIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr) override;
    unsigned long GetTcp6Table(MIB_TCP6TABLE* pTable, unsigned long* pulSize, bool bSort) override;

    class Wrap_MIB_IPFORWARDTABLE;
    class Wrap_MIB_IPADDRTABLE;
    class Wrap_IPHLPAPI_DLL;
};
