#pragma once

#include <vector>

#include <backends/pre_vista_api.h>
#include <support/platform/table_query.h>

/// One copy of the IPv4 address table, read on first use and kept.
class PreVistaAPI::Wrap_MIB_IPADDRTABLE
{
public:
    bool LoadTable();
    /// Appends the adapter's addresses.
    bool GetAdaptersIpAddrs(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ASSOC_IP_ADDR>& IpAddrs);

private:
    velmor::CachedTable<MIB_IPADDRTABLE, &MIB_IPADDRTABLE::dwNumEntries, &MIB_IPADDRTABLE::table> m_table;
};
