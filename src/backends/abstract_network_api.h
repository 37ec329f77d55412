#pragma once

// Back ends: routes and unicast addresses, for which Vista replaced the tables of IP Helper by new ones for both
// families. Each generation of Windows has one class here, chosen once when the library is loaded. The new functions
// are looked up at run time, because a DLL that imports them does not load on older systems.
//
// On Vista and later addresses are read and routes changed by functions, but addresses are set by netsh: see tools.
// Before Vista they are set by SetAdapterIpAddress, which IP Helper exports without a word of documentation.

#include <vector>

#include <zelk_nm/tolva.h>

/// What the façade asks of a Windows generation: routes and unicast addresses. One object is made when the library is
/// loaded and lives until it is unloaded. The order of the operations is the order of their slots.
class AbstractNetworkAPI
{
public:
    AbstractNetworkAPI() = default;
    AbstractNetworkAPI(const AbstractNetworkAPI&) = delete;
    AbstractNetworkAPI& operator=(const AbstractNetworkAPI&) = delete;

    virtual ~AbstractNetworkAPI() = default;
    /// Appends the routes of the adapter.
    virtual bool GetAdapterRoutes(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ROUTE_INFO>& Routes) = 0;
    virtual bool AddAdapterRoute(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ROUTE_INFO& Route) = 0;
    /// Appends the unicast addresses of the adapter.
    virtual bool GetAdaptersIpAddrs(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ASSOC_IP_ADDR>& IpAddrs) = 0;
    virtual bool SetDefaultGateway(const TOLVA::NIC_INFO& NicInfo, const velmor::ip_address& Gateway) = 0;
    virtual bool AddIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr) = 0;
    virtual bool DeleteIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr) = 0;
    /// `pulSize` is the size of the buffer in bytes and receives the size needed. Returns a Windows error code.
    virtual unsigned long GetTcp6Table(MIB_TCP6TABLE* pTable, unsigned long* pulSize, bool bSort) = 0;
};
