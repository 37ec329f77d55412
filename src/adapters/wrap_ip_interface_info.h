#pragma once

#include <vector>

#include <support/platform/table_query.h>
#include <zelk_nm/tolva.h>

/// One copy of the platform's table of IPv4 interfaces.
class TOLVA::Wrap_IP_INTERFACE_INFO
{
public:
    /// Reads the table afresh.
    bool LoadTable();

    /// Appends a record with name and GUID for each interface. A device name without a GUID in braces is left out and
    /// makes the operation fail, with the other records appended.
    bool GetAdapterList(std::vector<NIC_INFO>& NicList);

private:
    velmor::CachedTable<IP_INTERFACE_INFO, &IP_INTERFACE_INFO::NumAdapters, &IP_INTERFACE_INFO::Adapter> m_table;
};
