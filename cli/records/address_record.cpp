#include "records/address_record.h"

#include <algorithm>
#include <functional>
#include <string>

#include "answer/json_value.h"
#include "answer/word.h"

namespace zelkctl
{
namespace
{

constexpr Field FIELDS[] = {{"address", "Address"},      {"automatic", "Automatic"},    {"dadState", "DAD state"},
                            {"scopeZone", "Scope zone"}, {"scopeLevel", "Scope level"}, {"index", "Index"}};

constexpr Word DAD_STATES[] = {{IpDadStateInvalid, "Invalid"},
                               {IpDadStateTentative, "Tentative"},
                               {IpDadStateDuplicate, "Duplicate"},
                               {IpDadStateDeprecated, "Deprecated"},
                               {IpDadStatePreferred, "Preferred"}};

constexpr Word SCOPE_LEVELS[] = {{0, "n/a"},
                                 {ScopeLevelInterface, "Interface"},
                                 {ScopeLevelLink, "Link"},
                                 {ScopeLevelSubnet, "Subnet"},
                                 {ScopeLevelAdmin, "Admin"},
                                 {ScopeLevelSite, "Site"},
                                 {ScopeLevelOrganization, "Organisation"},
                                 {ScopeLevelGlobal, "Global"}};

using Keep = std::function<bool(const TOLVA::ASSOC_IP_ADDR&)>;

std::string NetworkText(const TOLVA::ASSOC_IP_ADDR& address)
{
    return NetworkOrNull(address.IpAddress, address.SubnetPrefix).get<std::string>();
}

/// In an order of their own, so that lists can be compared. The prefix length of IPv6 is the system's choice.
Json SortedTexts(const std::vector<TOLVA::ASSOC_IP_ADDR>& addresses, const Keep& keep)
{
    std::vector<std::string> texts;
    for (const TOLVA::ASSOC_IP_ADDR& address : addresses)
        if (address.IpAddress.is_valid() && keep(address))
            texts.push_back(address.IpAddress.is_ipv4() ? NetworkText(address)
                                                        : AddressOrNull(address.IpAddress).get<std::string>());
    std::ranges::sort(texts);
    return texts;
}

/// The adapter's addresses that are to be kept in view.
Aspect AddressesOf(Field field, const TOLVA::NIC_INFO& info, Keep keep, Json wanted)
{
    return {.field = field,
            .read =
                [info, keep] {
                    std::vector<TOLVA::ASSOC_IP_ADDR> addresses;
                    return TOLVA::GetAdaptersIpAddrs(info, addresses) ? SortedTexts(addresses, keep) : Json();
                },
            .wanted = std::move(wanted)};
}

bool IsIpv6(const TOLVA::ASSOC_IP_ADDR& address)
{
    return address.IpAddress.is_ipv6();
}

/// What the system gives itself where no DHCP server answers.
bool IsPrivate(const TOLVA::ASSOC_IP_ADDR& address)
{
    return NetworkText(address).starts_with("169.254.");
}

bool IsStaticIpv4(const TOLVA::ASSOC_IP_ADDR& address)
{
    return IsIpv4(address) && !address.bAutomatic;
}

bool IsStaticIpv6(const TOLVA::ASSOC_IP_ADDR& address)
{
    return IsIpv6(address) && !address.bAutomatic;
}

bool IsLeasedIpv4(const TOLVA::ASSOC_IP_ADDR& address)
{
    return IsIpv4(address) && address.bAutomatic && !IsPrivate(address);
}

} // namespace

bool IsIpv4(const TOLVA::ASSOC_IP_ADDR& address)
{
    return address.IpAddress.is_ipv4();
}

Json RecordOf(const TOLVA::ASSOC_IP_ADDR& address)
{
    const unsigned long ulZone = address.ScopeId.Zone;
    Json record;
    record["address"] = NetworkOrNull(address.IpAddress, address.SubnetPrefix);
    record["automatic"] = address.bAutomatic;
    record["dadState"] = WordOf(DAD_STATES, static_cast<unsigned long>(address.enDadState));
    record["scopeZone"] = ulZone == 0 ? "Default" : std::to_string(ulZone);
    record["scopeLevel"] = WordOf(SCOPE_LEVELS, address.ScopeId.Level);
    record["index"] = address.ulIndex;
    return record;
}

std::span<const Field> AddressFields()
{
    return FIELDS;
}

Aspect Ipv4Addresses(const TOLVA::NIC_INFO& info, const std::vector<TOLVA::ASSOC_IP_ADDR>& wanted)
{
    return AddressesOf({"ipv4Addresses", "IPv4 addresses"}, info, IsIpv4, SortedTexts(wanted, IsIpv4));
}

Aspect StaticIpv6Addresses(const TOLVA::NIC_INFO& info, const std::vector<TOLVA::ASSOC_IP_ADDR>& wanted)
{
    // Those wanted in any case: the system may hold that it configured them.
    const auto IsInView = [wanted](const TOLVA::ASSOC_IP_ADDR& address) {
        return IsIpv6(address) &&
               (!address.bAutomatic ||
                std::ranges::find(wanted, address.IpAddress, &TOLVA::ASSOC_IP_ADDR::IpAddress) != wanted.end());
    };
    return AddressesOf({"ipv6StaticAddresses", "Static IPv6 addresses"}, info, IsInView, SortedTexts(wanted, IsIpv6));
}

Aspect NoStaticAddresses(const TOLVA::NIC_INFO& info, TOLVA::FAMILY_TYPE enFamily)
{
    if (enFamily == TOLVA::FAMILY_IPV4)
        return AddressesOf({"ipv4StaticAddresses", "Static IPv4 addresses"}, info, IsStaticIpv4, Json::array());
    return AddressesOf({"ipv6StaticAddresses", "Static IPv6 addresses"}, info, IsStaticIpv6, Json::array());
}

Aspect LeasedIpv4Addresses(const TOLVA::NIC_INFO& info, bool bWanted)
{
    Aspect aspect = AddressesOf({"ipv4LeasedAddresses", "Leased IPv4 addresses"}, info, IsLeasedIpv4,
                                bWanted ? Json() : Json::array());
    if (bWanted)
        aspect.isReached = [](const Json& now) { return !now.empty(); };
    return aspect;
}

} // namespace zelkctl
