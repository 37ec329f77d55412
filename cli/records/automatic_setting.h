#pragma once

#include <span>
#include <vector>

#include <zelk_nm/tolva.h>

#include "answer/output.h"
#include "change/change.h"

namespace zelkctl
{

// Not constexpr: the address of an imported function is known when the program is loaded.

/// Something that is automatic for a family of an adapter unless the registry keeps a static list of it.
struct AutomaticSetting
{
    Field fields[2]; ///< of IPv4 and IPv6
    bool (*pQuery)(const TOLVA::NIC_INFO&, TOLVA::FAMILY_TYPE, bool&);
};
inline const AutomaticSetting AUTOMATIC_GATEWAY = {
    {{"ipv4GatewayAutomatic", "IPv4 gateway automatic"}, {"ipv6GatewayAutomatic", "IPv6 gateway automatic"}},
    &TOLVA::IsGatewayAutomatic};
inline const AutomaticSetting AUTOMATIC_DNS = {
    {{"ipv4DnsAutomatic", "IPv4 DNS automatic"}, {"ipv6DnsAutomatic", "IPv6 DNS automatic"}}, &TOLVA::IsDnsAutomatic};

inline std::vector<Field> FieldsOf(const AutomaticSetting& setting)
{
    return {setting.fields[0], setting.fields[1]};
}
/// A record with both fields. What cannot be read is null.
Json RecordOf(const AutomaticSetting& setting, const TOLVA::NIC_INFO& info);

/// That the setting of these families becomes automatic, or stops being it.
std::vector<Aspect> Become(bool bAutomatic, const AutomaticSetting& setting, const TOLVA::NIC_INFO& info,
                           TOLVA::FAMILY_TYPE enFamily);

// Lists of addresses in effect, as arrays of their texts; null when they cannot be read.

Json GatewaysOf(const TOLVA::NIC_INFO& info);
Json DnsServersOf(const TOLVA::NIC_INFO& info);

} // namespace zelkctl
