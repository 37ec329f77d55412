#include "adapter_record.h"

#include <vector>

#include "json_value.h"
#include "word.h"

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

constexpr Word STATUS_WORDS[] = {{TOLVA::OPER_STATUS_UP, "Up"},
                                 {TOLVA::OPER_STATUS_DOWN, "Down"},
                                 {TOLVA::OPER_STATUS_TESTING, "Testing"},
                                 {TOLVA::OPER_STATUS_UNKNOWN, "Unknown"},
                                 {TOLVA::OPER_STATUS_DORMANT, "Dormant"},
                                 {TOLVA::OPER_STATUS_NOT_PRESENT, "Not Present"},
                                 {TOLVA::OPER_STATUS_LOWER_LAYER_DOWN, "Lower-Layer Down"}};

/// The library says 0.0.0.0 for a server that is not there.
Json ServerOrNull(const velmor::ip_address& address)
{
    return address == velmor::ip_address() ? Json() : AddressOrNull(address);
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
    return WordOf(STATUS_WORDS, enStatus);
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
    return TOLVA::GetDhcpServer(info, server) ? ServerOrNull(server) : Json();
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
        texts.push_back(ServerOrNull(server));
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
