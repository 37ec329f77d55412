#pragma once

#include <vector>

#include <backends/pre_vista_api.h>
#include <support/platform/table_query.h>

/// One copy of the IPv4 address table, read on first use and kept.
class PreVistaAPI::Wrap_MIB_IPADDRTABLE
{
public:
    Wrap_MIB_IPADDRTABLE() = default;
    Wrap_MIB_IPADDRTABLE(const Wrap_MIB_IPADDRTABLE&) = delete;
    Wrap_MIB_IPADDRTABLE& operator=(const Wrap_MIB_IPADDRTABLE&) = delete;

    bool LoadTable();
    /// Appends the adapter's addresses.
    bool GetAdaptersIpAddrs(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ASSOC_IP_ADDR>& IpAddrs);

private:
    MIB_IPADDRTABLE* m_pMibIpAddrTable = nullptr;
    velmor::TableBuffer m_buffer;
};
