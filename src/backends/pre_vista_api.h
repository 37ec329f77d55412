#pragma once

#include <backends/abstract_network_api.h>

class PreVistaAPI : public AbstractNetworkAPI
{
public:
    bool GetAdapterRoutes(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ROUTE_INFO>& Routes) override;
    bool AddAdapterRoute(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ROUTE_INFO& Route) override;
    bool GetAdaptersIpAddrs(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ASSOC_IP_ADDR>& IpAddrs) override;
    bool SetDefaultGateway(const TOLVA::NIC_INFO& NicInfo, const velmor::ip_address& Gateway) override;
    bool AddIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr) override;
    bool DeleteIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr) override;
    unsigned long GetTcp6Table(MIB_TCP6TABLE* pTable, unsigned long* pulSize, bool bSort) override;
};
