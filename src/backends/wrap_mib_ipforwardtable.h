#pragma once

#include <vector>

#include <backends/pre_vista_api.h>
#include <support/platform/table_query.h>

/// One copy of the IPv4 route table, read on first use and kept.
class PreVistaAPI::Wrap_MIB_IPFORWARDTABLE
{
public:
    bool LoadTable();
    /// Appends the adapter's routes.
    bool GetAdapterRoutes(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ROUTE_INFO>& Routes);
    /// Deletes the adapter's default routes; the first refusal ends it. `row` is the last route that it tried. The copy
    /// of the table still has them afterwards.
    bool DeleteDefaultRoute(const TOLVA::NIC_INFO& NicInfo, bool& bFound, MIB_IPFORWARDROW& row);

private:
    velmor::CachedTable<MIB_IPFORWARDTABLE, &MIB_IPFORWARDTABLE::dwNumEntries, &MIB_IPFORWARDTABLE::table> m_table;
};
