#pragma once

// Adapters: which there are, what they are like, and the device behind each. Three sources are joined by the adapter's
// GUID: GetInterfaceInfo says which adapters IPv4 is bound to, and so which the library lists; the registry knows the
// driver and the connection; GetAdaptersAddresses has the rest. The platform's number of an adapter, the interface
// index, changes while the machine runs, so it is looked up for every question and never kept.

#include <vector>

#include <support/platform/table_query.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

/// One copy of the platform's adapter-address table, read on the first question. Each question is about the adapter
/// with the IPv4 interface index `ulIndex` and fails when the table has none, or cannot be read.
class TOLVA::Wrap_IP_ADAPTER_ADDRESSES
{
public:
    explicit Wrap_IP_ADAPTER_ADDRESSES(FAMILY_TYPE enFamily);
    Wrap_IP_ADAPTER_ADDRESSES(const Wrap_IP_ADAPTER_ADDRESSES&) = delete;
    Wrap_IP_ADAPTER_ADDRESSES& operator=(const Wrap_IP_ADAPTER_ADDRESSES&) = delete;

    /// Reads the table afresh.
    bool LoadTable();

    /// An adapter with an empty name leaves `sNicFriendlyName` as it is, and succeeds.
    bool GetAdapterFriendlyName(unsigned long ulIndex, velmor::string& sNicFriendlyName);
    bool GetAdapterOperStatus(unsigned long ulIndex, TOLVA_OPER_STATUS& enOperStatus);
    bool GetAdapterType(unsigned long ulIndex, velmor::string& sNicType);
    bool GetAddressFamilySupported(unsigned long ulIndex, FAMILY_TYPE& enFamilyType);
    /// Needs a table with IPv4.
    bool GetDhcpServer(unsigned long ulIndex, velmor::ip_address& DhcpServer);
    /// Needs a table with IPv6.
    bool GetDhcpServer(unsigned long ulIndex, unsigned long& ulIAID, velmor::string& sDUID);
    /// Appends.
    bool GetDnsServerList(unsigned long ulIndex, std::vector<velmor::ip_address>& DnsServerList);
    bool GetHardwareAddress(unsigned long ulIndex, HARDWARE_ADDRESS& HwAddr);

private:
    template <class Extract>
    bool Query(const CallFrame& frame, unsigned long ulIndex, Extract&& extract);
    const IP_ADAPTER_ADDRESSES* Find(unsigned long ulIndex) const noexcept;

    IP_ADAPTER_ADDRESSES* m_pAddresses = nullptr;
    FAMILY_TYPE m_enFamily;
    velmor::TableBuffer m_buffer;
};
