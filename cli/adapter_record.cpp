#include "adapter_record.h"

#include <vector>

#include "text.h"

namespace zelkctl
{
namespace
{

constexpr Field SUMMARY_FIELDS[] = {{"index", "Index"},
                                    {"name", "Name"},
                                    {"type", "Type"},
                                    {"hardwareAddress", "Hardware address"},
                                    {"status", "Status"},
                                    {"guid", "GUID"},
                                    {"description", "Description"}};

constexpr Field DETAIL_FIELDS[] = {{"index", "Index"},
                                   {"name", "Name"},
                                   {"ipconfigName", "Connection name"},
                                   {"type", "Type"},
                                   {"hardwareAddress", "Hardware address"},
                                   {"status", "Status"},
                                   {"guid", "GUID"},
                                   {"description", "Description"},
                                   {"deviceName", "Device name"},
                                   {"classKey", "Class key"},
                                   {"deviceInstance", "Device instance"},
                                   {"families", "Address families"},
                                   {"dhcpv4Server", "DHCPv4 server"},
                                   {"dhcpv6Iaid", "DHCPv6 IAID"},
                                   {"dhcpv6Duid", "DHCPv6 DUID"},
                                   {"dnsServers", "DNS servers"},
                                   {"canChangeOptions", "Can change options"}};

Json TextOrNull(const velmor::string& text)
{
    return text.empty() ? Json() : Json(ToUtf8(text));
}

Json AddressOrNull(const velmor::ip_address& address)
{
    const bool bNone = !address.is_valid() || address == velmor::ip_address();
    return bNone ? Json() : TextOrNull(address);
}

Json IndexOf(const Adapter& adapter)
{
    return adapter.index ? Json(*adapter.index) : Json();
}

/// The record has it only when everything else about the device was found out too; the adapter itself can be asked
/// always.
Json HardwareAddressOf(const TOLVA::NIC_INFO& info)
{
    TOLVA::HARDWARE_ADDRESS address;
    if (!info.sNicHwAddr.empty() || !TOLVA::GetHardwareAddress(info, address))
        return TextOrNull(info.sNicHwAddr);
    return TextOrNull(address);
}

Json StatusOf(const TOLVA::NIC_INFO& info)
{
    auto enStatus = TOLVA::OPER_STATUS_UNKNOWN;
    if (!TOLVA::GetAdapterOperStatus(info, enStatus))
        return {};
    switch (enStatus)
    {
    case TOLVA::OPER_STATUS_UP: return "Up";
    case TOLVA::OPER_STATUS_DOWN: return "Down";
    case TOLVA::OPER_STATUS_TESTING: return "Testing";
    case TOLVA::OPER_STATUS_UNKNOWN: return "Unknown";
    case TOLVA::OPER_STATUS_DORMANT: return "Dormant";
    case TOLVA::OPER_STATUS_NOT_PRESENT: return "Not Present";
    case TOLVA::OPER_STATUS_LOWER_LAYER_DOWN: return "Lower-Layer Down";
    }
    return {};
}

Json FamiliesOf(const TOLVA::NIC_INFO& info)
{
    auto enFamily = TOLVA::FAMILY_BOTH;
    if (!TOLVA::AddressFamilySupported(info, enFamily))
        return {};
    Json families = Json::array();
    if (enFamily != TOLVA::FAMILY_IPV6)
        families.push_back("IPv4");
    if (enFamily != TOLVA::FAMILY_IPV4)
        families.push_back("IPv6");
    return families;
}

Json Dhcpv4ServerOf(const TOLVA::NIC_INFO& info)
{
    velmor::ip_address server;
    return TOLVA::GetDhcpServer(info, server) ? AddressOrNull(server) : Json();
}

void AddDhcpv6Identity(const TOLVA::NIC_INFO& info, Json& record)
{
    unsigned long ulIAID = 0;
    velmor::string sDUID;
    const bool bKnown = TOLVA::GetDhcpServer(info, ulIAID, sDUID);
    record["dhcpv6Iaid"] = bKnown ? Json(ulIAID) : Json();
    record["dhcpv6Duid"] = bKnown ? TextOrNull(sDUID) : Json();
}

Json DnsServersOf(const TOLVA::NIC_INFO& info)
{
    std::vector<velmor::ip_address> servers;
    if (!TOLVA::GetDnsServerList(info, servers))
        return {};
    Json texts = Json::array();
    for (const velmor::ip_address& server : servers)
        texts.push_back(AddressOrNull(server));
    return texts;
}

Json CanChangeOptionsOf(const TOLVA::NIC_INFO& info)
{
    bool bCanChange = false;
    return TOLVA::CanChangeAdapterOptions(info, bCanChange) ? Json(bCanChange) : Json();
}

} // namespace

Json SummaryOf(const Adapter& adapter)
{
    Json record;
    record["index"] = IndexOf(adapter);
    record["name"] = TextOrNull(adapter.Name());
    record["type"] = TextOrNull(adapter.info.sNicType);
    record["hardwareAddress"] = HardwareAddressOf(adapter.info);
    record["status"] = StatusOf(adapter.info);
    record["guid"] = TextOrNull(adapter.info.sNicGuid);
    record["description"] = TextOrNull(adapter.info.sNicDesc);
    return record;
}

Json DetailsOf(const Adapter& adapter)
{
    const TOLVA::NIC_INFO& info = adapter.info;
    Json record = SummaryOf(adapter);
    record["ipconfigName"] = TextOrNull(adapter.sIpconfigName);
    record["deviceName"] = TextOrNull(info.sNicName);
    record["classKey"] = TextOrNull(info.sNicEnum);
    record["deviceInstance"] = TextOrNull(info.sNicPci);
    record["families"] = FamiliesOf(info);
    record["dhcpv4Server"] = Dhcpv4ServerOf(info);
    AddDhcpv6Identity(info, record);
    record["dnsServers"] = DnsServersOf(info);
    record["canChangeOptions"] = CanChangeOptionsOf(info);
    return record;
}

std::span<const Field> SummaryFields()
{
    return SUMMARY_FIELDS;
}

std::span<const Field> DetailFields()
{
    return DETAIL_FIELDS;
}

} // namespace zelkctl
