#include "records/shown_fields.h"

#include <algorithm>
#include <cctype>
#include <initializer_list>
#include <string_view>

namespace zelkctl
{
namespace
{

/// A field whose value is another record.
struct Inner
{
    std::string_view key;
    std::vector<Field> (*fields)();
    enum
    {
        NAMED,   ///< the label goes before those of the inner fields
        UNNAMED, ///< the inner labels say enough
        LIST     ///< it is a list of such records
    } kind;
};

/// "IPv4" and "Default gateways" make "IPv4 default gateways"; "DHCP" and "NetBIOS" stay as they are.
std::string JoinedLabel(const std::string& sLabel, std::string sInner)
{
    const std::string_view word = std::string_view(sInner).substr(0, sInner.find(' '));
    const bool bName =
        std::any_of(word.begin() + 1, word.end(), [](unsigned char byte) { return std::isupper(byte) != 0; });
    if (!bName)
        sInner[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(sInner[0])));
    return sLabel + ' ' + sInner;
}

/// Of settings that both families share, those that one of them does not have.
bool IsOfOtherFamily(const std::string& sKey)
{
    constexpr const char* OTHERS[] = {"ipv4.dhcpIaid", "ipv4.dhcpDuid",          "ipv6.autoconfiguration",
                                      "ipv6.netbios",  "ipv6.configured.dhcp",   "ipv6.configured.autoconfiguration",
                                      "ipv6.lease.",   "ipv6.configured.netbios"};
    return std::ranges::any_of(OTHERS, [&](const char* pszKey) { return sKey.starts_with(pszKey); });
}

void AppendInner(const Inner& inner, const Field& field, std::vector<Field>& fields)
{
    if (inner.kind == inner.LIST)
        fields.push_back(field);
    for (Field innerField : inner.fields())
    {
        innerField.sKey = field.sKey + '.' + innerField.sKey;
        if (IsOfOtherFamily(innerField.sKey))
            continue;
        if (inner.kind == inner.NAMED)
            innerField.sLabel = JoinedLabel(field.sLabel, innerField.sLabel);
        innerField.bOnlyByKey |= inner.kind == inner.LIST;
        fields.push_back(std::move(innerField));
    }
}

template <class Record>
std::vector<Field> WithInner(std::initializer_list<Inner> inners)
{
    std::vector<Field> fields;
    for (const zelk::Field<Record>& field : zelk::FieldsOf<Record>())
    {
        const Field outer = {field.key, field.label, field.unit, field.labelOfWord};
        const auto inner = std::ranges::find(inners, std::string_view(field.key), &Inner::key);
        if (inner == inners.end())
            fields.push_back(outer);
        else
            AppendInner(*inner, outer, fields);
    }
    return fields;
}

std::vector<Field> ConfiguredIpFields()
{
    return WithInner<zelk::ConfiguredIp>({{"gateways", ShownFields<zelk::Gateway>, Inner::LIST}});
}

} // namespace

template <>
std::vector<Field> ShownFields<zelk::Machine>()
{
    return WithInner<zelk::Machine>({{"environment", ShownFields<zelk::Environment>, Inner::UNNAMED},
                                     {"identity", ShownFields<zelk::Identity>, Inner::UNNAMED},
                                     {"adapters", ShownFields<zelk::Adapter>, Inner::LIST},
                                     {"unassignedRoutes", ShownFields<zelk::Route>, Inner::LIST},
                                     {"problems", ShownFields<zelk::Problem>, Inner::LIST}});
}

template <>
std::vector<Field> ShownFields<zelk::Identity>()
{
    return WithInner<zelk::Identity>({{"configured", ShownFields<zelk::ConfiguredIdentity>, Inner::NAMED}});
}

template <>
std::vector<Field> ShownFields<zelk::Adapter>()
{
    return WithInner<zelk::Adapter>({{"driver", ShownFields<zelk::Driver>, Inner::UNNAMED},
                                     {"deviceProblem", ShownFields<zelk::DeviceProblem>, Inner::UNNAMED},
                                     {"ipv4", ShownFields<zelk::IpSettings>, Inner::NAMED},
                                     {"ipv6", ShownFields<zelk::IpSettings>, Inner::NAMED},
                                     {"routes", ShownFields<zelk::Route>, Inner::LIST},
                                     {"problems", ShownFields<zelk::Problem>, Inner::LIST}});
}

template <>
std::vector<Field> ShownFields<zelk::IpSettings>()
{
    return WithInner<zelk::IpSettings>({{"addresses", ShownFields<zelk::Address>, Inner::LIST},
                                        {"gateways", ShownFields<zelk::Gateway>, Inner::LIST},
                                        {"lease", ShownFields<zelk::Lease>, Inner::UNNAMED},
                                        {"configured", ConfiguredIpFields, Inner::NAMED}});
}

std::vector<Field> Only(const std::vector<std::string>& keys, const std::vector<Field>& fields)
{
    std::vector<Field> selected;
    for (const std::string& sKey : keys)
        selected.push_back(*std::ranges::find(fields, sKey, &Field::sKey));
    return selected;
}

} // namespace zelkctl
