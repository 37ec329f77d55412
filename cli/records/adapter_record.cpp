#include "records/adapter_record.h"

#include <vector>

#include "answer/json_value.h"
#include "answer/word.h"
#include "records/automatic_setting.h"
#include "records/dhcp_record.h"
#include "records/family.h"
#include "records/settings_record.h"

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

constexpr Field IDENTITY_FIELDS[] = {{"index", "Index"},
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
                                     {"canChangeOptions", "Can change options"},
                                     {"families", "Address families"},
                                     {"addresses", "Addresses"}};
constexpr Field GATEWAYS_FIELD[] = {{"gateways", "Default gateways"}};
constexpr Field DNS_SERVERS_FIELD[] = {{"dnsServers", "DNS servers"}};

constexpr Word STATUS_WORDS[] = {{TOLVA::OPER_STATUS_UP, "Up"},
                                 {TOLVA::OPER_STATUS_DOWN, "Down"},
                                 {TOLVA::OPER_STATUS_TESTING, "Testing"},
                                 {TOLVA::OPER_STATUS_UNKNOWN, "Unknown"},
                                 {TOLVA::OPER_STATUS_DORMANT, "Dormant"},
                                 {TOLVA::OPER_STATUS_NOT_PRESENT, "Not Present"},
                                 {TOLVA::OPER_STATUS_LOWER_LAYER_DOWN, "Lower-Layer Down"}};

Json IndexOf(const Adapter& adapter)
{
    return adapter.index ? Json(*adapter.index) : Json();
}

Json StatusWord(TOLVA::TOLVA_OPER_STATUS enStatus)
{
    return WordOf(STATUS_WORDS, enStatus);
}

Json FamilyNames(TOLVA::FAMILY_TYPE enFamily)
{
    Json families = Json::array();
    if (HasIpv4(enFamily))
        families.push_back("IPv4");
    if (HasIpv6(enFamily))
        families.push_back("IPv6");
    return families;
}

Json Networks(const std::vector<TOLVA::ASSOC_IP_ADDR>& addresses)
{
    return RecordsOf(addresses, [](const TOLVA::ASSOC_IP_ADDR& address) {
        return NetworkOrNull(address.IpAddress, address.SubnetPrefix);
    });
}

} // namespace

Json SummaryOf(const Adapter& adapter)
{
    Json record;
    record["index"] = IndexOf(adapter);
    record["name"] = TextOrNull(adapter.Name());
    record["type"] = TextOrNull(adapter.info.sNicType);
    record["hardwareAddress"] = TextOrNull(HardwareAddressOf(adapter.info));
    record["status"] = AnswerOrNull(&TOLVA::GetAdapterOperStatus, adapter.info, StatusWord);
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
    record["canChangeOptions"] = AnswerOrNull(&TOLVA::CanChangeAdapterOptions, info);
    record["families"] = AnswerOrNull(&TOLVA::AddressFamilySupported, info, FamilyNames);
    record["addresses"] = AnswerOrNull(&TOLVA::GetAdaptersIpAddrs, info, Networks);
    record.update(DhcpOf(info, TOLVA::FAMILY_BOTH));
    record["gateways"] = GatewaysOf(info);
    record.update(RecordOf(AUTOMATIC_GATEWAY, info));
    record["dnsServers"] = DnsServersOf(info);
    record.update(RecordOf(AUTOMATIC_DNS, info));
    record.update(SettingsOf(info));
    return record;
}

std::span<const Field> SummaryFields()
{
    return SUMMARY_FIELDS;
}

std::vector<Field> DetailFields()
{
    std::vector<Field> fields;
    for (const std::span<const Field> part :
         {std::span<const Field>(IDENTITY_FIELDS), DhcpFields(TOLVA::FAMILY_BOTH),
          std::span<const Field>(GATEWAYS_FIELD), std::span<const Field>(AUTOMATIC_GATEWAY.fields),
          std::span<const Field>(DNS_SERVERS_FIELD), std::span<const Field>(AUTOMATIC_DNS.fields), SettingsFields()})
        fields.insert(fields.end(), part.begin(), part.end());
    return fields;
}

} // namespace zelkctl
