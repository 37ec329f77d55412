#pragma once

#include <vector>

#include <backends/pre_vista_api.h>
#include <support/platform/table_query.h>

/// One copy of the IPv4 route table, read on first use and kept.
class PreVistaAPI::Wrap_MIB_IPFORWARDTABLE
{
public:
    Wrap_MIB_IPFORWARDTABLE() = default;
    Wrap_MIB_IPFORWARDTABLE(const Wrap_MIB_IPFORWARDTABLE&) = delete;
    Wrap_MIB_IPFORWARDTABLE& operator=(const Wrap_MIB_IPFORWARDTABLE&) = delete;

    bool LoadTable();
    /// Appends the adapter's routes.
    bool GetAdapterRoutes(const TOLVA::NIC_INFO& NicInfo, std::vector<TOLVA::ROUTE_INFO>& Routes);
    /// Deletes the adapter's default routes; the first refusal ends it. `row` is the last route that it tried. The copy
    /// of the table still has them afterwards.
    bool DeleteDefaultRoute(const TOLVA::NIC_INFO& NicInfo, bool& bFound, MIB_IPFORWARDROW& row);

private:
    MIB_IPFORWARDTABLE* m_pMibIpForwardTable = nullptr;
    velmor::TableBuffer m_buffer;
};
