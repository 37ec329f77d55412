#include "records/dhcp_record.h"

#include "answer/json_value.h"
#include "records/family.h"

namespace zelkctl
{
namespace
{

/// Those of IPv4 first.
constexpr Field FIELDS[] = {{"dhcpv4Enabled", "DHCPv4 enabled"},
                            {"dhcpv4Server", "DHCPv4 server"},
                            {"dhcpv6Enabled", "DHCPv6 enabled"},
                            {"dhcpv6Iaid", "DHCPv6 IAID"},
                            {"dhcpv6Duid", "DHCPv6 DUID"}};
constexpr std::size_t IPV4_FIELDS = 2;

void AddIpv4(const TOLVA::NIC_INFO& info, Json& record)
{
    record["dhcpv4Enabled"] = AnswerOrNull(&TOLVA::IsDhcpEnabled, info, TOLVA::FAMILY_IPV4);
    record["dhcpv4Server"] = AnswerOrNull<velmor::ip_address>(&TOLVA::GetDhcpServer, info, ServerOrNull);
}

void AddIpv6(const TOLVA::NIC_INFO& info, Json& record)
{
    unsigned long ulIAID = 0;
    velmor::string sDUID;
    const bool bKnown = TOLVA::GetDhcpServer(info, ulIAID, sDUID);
    record["dhcpv6Enabled"] = AnswerOrNull(&TOLVA::IsDhcpEnabled, info, TOLVA::FAMILY_IPV6);
    record["dhcpv6Iaid"] = bKnown ? Json(ulIAID) : Json();
    record["dhcpv6Duid"] = bKnown ? TextOrNull(sDUID) : Json();
}

} // namespace

Json DhcpOf(const TOLVA::NIC_INFO& info, TOLVA::FAMILY_TYPE enFamily)
{
    Json record;
    if (HasIpv4(enFamily))
        AddIpv4(info, record);
    if (HasIpv6(enFamily))
        AddIpv6(info, record);
    return record;
}

std::span<const Field> DhcpFields(TOLVA::FAMILY_TYPE enFamily)
{
    const std::span<const Field> fields = FIELDS;
    if (enFamily == TOLVA::FAMILY_BOTH)
        return fields;
    return enFamily == TOLVA::FAMILY_IPV4 ? fields.first(IPV4_FIELDS) : fields.subspan(IPV4_FIELDS);
}

} // namespace zelkctl
