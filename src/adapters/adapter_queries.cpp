#include <adapters/wrap_ip_adapter_addresses.h>
#include <support/operation/adapter_operation.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

namespace
{

/// What all questions to the adapter-address table have in common: a wrapper of the family is asked about the adapter's
/// index by `ask`, whose failure is traced as `pszFailure`.
template <class Ask>
bool AskAddressTable(const char* pszName, const TOLVA::NIC_INFO& NicInfo, TOLVA::FAMILY_TYPE enFamily,
                     const char* pszFailure, Ask&& ask)
{
    return RunOnAdapter(pszName, NicInfo, [&](const CallFrame& frame) {
        unsigned long ulIndex = 0;
        if (!FindIndex(frame, NicInfo, ulIndex))
            return false;
        TOLVA::Wrap_IP_ADAPTER_ADDRESSES table(enFamily);
        if (!ask(table, ulIndex))
            return frame.Fail(pszFailure);
        return frame.Succeed();
    });
}

} // namespace

bool TOLVA::GetAdapterFriendlyName(NIC_INFO& NicInfo)
{
    return AskAddressTable("TOLVA::GetAdapterFriendlyName", NicInfo, FAMILY_BOTH,
                           "Wrap_IP_ADAPTER_ADDRESSES::GetAdapterFriendlyName() failed",
                           [&](Wrap_IP_ADAPTER_ADDRESSES& table, unsigned long ulIndex) {
                               return table.GetAdapterFriendlyName(ulIndex, NicInfo.sNicFriendlyName);
                           });
}

bool TOLVA::GetAdapterType(NIC_INFO& NicInfo)
{
    return AskAddressTable("TOLVA::GetAdapterType", NicInfo, FAMILY_BOTH,
                           "Wrap_IP_ADAPTER_ADDRESSES::GetAdapterType() failed",
                           [&](Wrap_IP_ADAPTER_ADDRESSES& table, unsigned long ulIndex) {
                               return table.GetAdapterType(ulIndex, NicInfo.sNicType);
                           });
}

bool TOLVA::GetAdapterOperStatus(const NIC_INFO& NicInfo, TOLVA_OPER_STATUS& enOperStatus)
{
    return AskAddressTable("TOLVA::GetAdapterOperStatus", NicInfo, FAMILY_BOTH,
                           "Wrap_IP_ADAPTER_ADDRESSES::GetAdapterOperStatus() failed",
                           [&](Wrap_IP_ADAPTER_ADDRESSES& table, unsigned long ulIndex) {
                               return table.GetAdapterOperStatus(ulIndex, enOperStatus);
                           });
}

bool TOLVA::AddressFamilySupported(const NIC_INFO& NicInfo, FAMILY_TYPE& enFamilyType)
{
    return AskAddressTable("TOLVA::AddressFamilySupported", NicInfo, FAMILY_BOTH,
                           "Wrap_IP_ADAPTER_ADDRESSES::GetAddressFamilySupported() failed",
                           [&](Wrap_IP_ADAPTER_ADDRESSES& table, unsigned long ulIndex) {
                               return table.GetAddressFamilySupported(ulIndex, enFamilyType);
                           });
}

bool TOLVA::GetHardwareAddress(const NIC_INFO& NicInfo, HARDWARE_ADDRESS& HwAddr)
{
    return AskAddressTable("TOLVA::GetHardwareAddress", NicInfo, FAMILY_BOTH,
                           "Wrap_IP_ADAPTER_ADDRESSES::GetHardwareAddress() failed",
                           [&](Wrap_IP_ADAPTER_ADDRESSES& table, unsigned long ulIndex) {
                               return table.GetHardwareAddress(ulIndex, HwAddr);
                           });
}

bool TOLVA::GetDhcpServer(const NIC_INFO& NicInfo, velmor::ip_address& DhcpServer)
{
    return AskAddressTable("TOLVA::GetDhcpServer", NicInfo, FAMILY_IPV4,
                           "Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer() failed",
                           [&](Wrap_IP_ADAPTER_ADDRESSES& table, unsigned long ulIndex) {
                               return table.GetDhcpServer(ulIndex, DhcpServer);
                           });
}

bool TOLVA::GetDhcpServer(const NIC_INFO& NicInfo, unsigned long& ulIAID, velmor::string& sDUID)
{
    return AskAddressTable("TOLVA::GetDhcpServer", NicInfo, FAMILY_IPV6,
                           "Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer() failed",
                           [&](Wrap_IP_ADAPTER_ADDRESSES& table, unsigned long ulIndex) {
                               return table.GetDhcpServer(ulIndex, ulIAID, sDUID);
                           });
}

bool TOLVA::GetDnsServerList(const NIC_INFO& NicInfo, std::vector<velmor::ip_address>& DnsServerList)
{
    return AskAddressTable("TOLVA::GetDnsServerList", NicInfo, FAMILY_BOTH,
                           "Wrap_IP_ADAPTER_ADDRESSES::GetDnsServerList() failed",
                           [&](Wrap_IP_ADAPTER_ADDRESSES& table, unsigned long ulIndex) {
                               return table.GetDnsServerList(ulIndex, DnsServerList);
                           });
}
