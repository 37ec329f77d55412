#pragma once

#include <vector>

#include <support/platform/table_query.h>
#include <zelk_nm/tolva.h>

/// One copy of the platform's table of IPv4 interfaces.
class TOLVA::Wrap_IP_INTERFACE_INFO
{
public:
    Wrap_IP_INTERFACE_INFO() = default;
    Wrap_IP_INTERFACE_INFO(const Wrap_IP_INTERFACE_INFO&) = delete;
    Wrap_IP_INTERFACE_INFO& operator=(const Wrap_IP_INTERFACE_INFO&) = delete;

    /// Reads the table afresh.
    bool LoadTable();

    /// Appends a record with name and GUID for each interface. A device name without a GUID in braces is left out and
    /// makes the operation fail, with the other records appended.
    bool GetAdapterList(std::vector<NIC_INFO>& NicList);

private:
    IP_INTERFACE_INFO* m_pInterfaceInfo = nullptr;
    velmor::TableBuffer m_buffer;
};
