#include "dns_record.h"

#include "json_value.h"

namespace zelkctl
{
namespace
{

constexpr Field STATE_FIELDS[] = {{"ipv4DnsAutomatic", "IPv4 DNS automatic"},
                                  {"ipv6DnsAutomatic", "IPv6 DNS automatic"}};

} // namespace

Json DnsServerTexts(const std::vector<velmor::ip_address>& servers)
{
    return RecordsOf(servers, ServerOrNull);
}

Json DnsStateOf(const TOLVA::NIC_INFO& info)
{
    Json record;
    record["ipv4DnsAutomatic"] = AnswerOrNull(&TOLVA::IsDnsAutomatic, info, TOLVA::FAMILY_IPV4);
    record["ipv6DnsAutomatic"] = AnswerOrNull(&TOLVA::IsDnsAutomatic, info, TOLVA::FAMILY_IPV6);
    return record;
}

std::span<const Field> DnsStateFields()
{
    return STATE_FIELDS;
}

} // namespace zelkctl
