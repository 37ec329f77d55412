#include "records/automatic_setting.h"

#include "answer/json_value.h"
#include "records/family.h"

namespace zelkctl
{

Json RecordOf(const AutomaticSetting& setting, const TOLVA::NIC_INFO& info)
{
    Json record;
    record[setting.fields[0].pszKey] = AnswerOrNull(setting.pQuery, info, TOLVA::FAMILY_IPV4);
    record[setting.fields[1].pszKey] = AnswerOrNull(setting.pQuery, info, TOLVA::FAMILY_IPV6);
    return record;
}

std::vector<Aspect> Become(bool bAutomatic, const AutomaticSetting& setting, const TOLVA::NIC_INFO& info,
                           TOLVA::FAMILY_TYPE enFamily)
{
    std::vector<Aspect> aspects;
    const auto AddFamily = [&](const Field& field, TOLVA::FAMILY_TYPE enOne) {
        aspects.push_back(
            {.field = field, .read = [=] { return AnswerOrNull(setting.pQuery, info, enOne); }, .wanted = bAutomatic});
    };
    if (HasIpv4(enFamily))
        AddFamily(setting.fields[0], TOLVA::FAMILY_IPV4);
    if (HasIpv6(enFamily))
        AddFamily(setting.fields[1], TOLVA::FAMILY_IPV6);
    return aspects;
}

Json GatewaysOf(const TOLVA::NIC_INFO& info)
{
    std::vector<velmor::ip_address> gateways;
    if (!TOLVA::GetDefaultGatewayList(info, TOLVA::FAMILY_BOTH, gateways))
        return {};
    return RecordsOf(gateways, AddressOrNull);
}

Json DnsServersOf(const TOLVA::NIC_INFO& info)
{
    std::vector<velmor::ip_address> servers;
    if (!TOLVA::GetDnsServerList(info, servers))
        return {};
    return RecordsOf(servers, ServerOrNull);
}

} // namespace zelkctl
