#include "gateway_record.h"

#include <vector>

#include "json_value.h"

namespace zelkctl
{
namespace
{

constexpr Field STATE_FIELDS[] = {{"ipv4GatewayAutomatic", "IPv4 gateway automatic"},
                                  {"ipv6GatewayAutomatic", "IPv6 gateway automatic"}};

} // namespace

Json GatewaysOf(const TOLVA::NIC_INFO& info)
{
    std::vector<velmor::ip_address> gateways;
    if (!TOLVA::GetDefaultGatewayList(info, TOLVA::FAMILY_BOTH, gateways))
        return {};
    return RecordsOf(gateways, AddressOrNull);
}

Json GatewayStateOf(const TOLVA::NIC_INFO& info)
{
    Json record;
    record["ipv4GatewayAutomatic"] = AnswerOrNull(&TOLVA::IsGatewayAutomatic, info, TOLVA::FAMILY_IPV4);
    record["ipv6GatewayAutomatic"] = AnswerOrNull(&TOLVA::IsGatewayAutomatic, info, TOLVA::FAMILY_IPV6);
    return record;
}

std::span<const Field> GatewayStateFields()
{
    return STATE_FIELDS;
}

} // namespace zelkctl
