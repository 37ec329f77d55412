#include "verbs/address_aspects.h"

#include <algorithm>
#include <functional>
#include <string>

namespace zelkctl
{
namespace
{

using Keep = std::function<bool(const zelk::Address&)>;

/// In an order of their own, so that lists can be compared.
Json Sorted(std::vector<std::string> texts)
{
    std::ranges::sort(texts);
    return texts;
}

/// The system chooses the prefix length of an IPv6 address.
std::string TextOf(const zelk::IpPrefix& prefix)
{
    return prefix.address.IsIpv4() ? prefix.ToText() : prefix.address.ToText();
}

Json WantedTexts(const std::vector<zelk::IpPrefix>& wanted, zelk::Family family)
{
    std::vector<std::string> texts;
    for (const zelk::IpPrefix& prefix : wanted)
        if (prefix.address.GetFamily() == family)
            texts.push_back(TextOf(prefix));
    return Sorted(std::move(texts));
}

/// The adapter's addresses of the family that are to be kept in view.
Aspect AddressesOf(const zelk::Adapter& adapter, const char* pszKey, const char* pszLabel, zelk::Family family,
                   Keep keep, Json wanted)
{
    const auto Read = [family, keep = std::move(keep)](const zelk::Adapter& now) {
        const auto& addresses = (family == zelk::Family::IPV4 ? now.ipv4 : now.ipv6).addresses;
        if (!addresses)
            return Json();
        std::vector<std::string> texts;
        for (const zelk::Address& address : *addresses)
            if (keep(address))
                texts.push_back(TextOf({address.address, address.prefixLength.value_or(0)}));
        return Sorted(std::move(texts));
    };
    return AdapterAspect(adapter, pszKey, pszLabel, Read, std::move(wanted));
}

bool IsStatic(const zelk::Address& address)
{
    return address.origin == zelk::AddressOrigin::MANUAL;
}

bool IsLeased(const zelk::Address& address)
{
    return address.origin == zelk::AddressOrigin::DHCP && !address.address.IsLinkLocal();
}

} // namespace

Aspect Ipv4Addresses(const zelk::Adapter& adapter, const std::vector<zelk::IpPrefix>& wanted)
{
    return AddressesOf(
        adapter, "ipv4Addresses", "IPv4 addresses", zelk::Family::IPV4, [](const zelk::Address&) { return true; },
        WantedTexts(wanted, zelk::Family::IPV4));
}

Aspect StaticIpv6Addresses(const zelk::Adapter& adapter, const std::vector<zelk::IpPrefix>& wanted)
{
    // Those wanted in any case: the system may hold that it configured them.
    const auto IsInView = [wanted](const zelk::Address& address) {
        return IsStatic(address) ||
               std::ranges::find(wanted, address.address, &zelk::IpPrefix::address) != wanted.end();
    };
    return AddressesOf(adapter, "ipv6StaticAddresses", "Static IPv6 addresses", zelk::Family::IPV6, IsInView,
                       WantedTexts(wanted, zelk::Family::IPV6));
}

Aspect NoStaticAddresses(const zelk::Adapter& adapter, zelk::Family family)
{
    if (family == zelk::Family::IPV4)
        return AddressesOf(adapter, "ipv4StaticAddresses", "Static IPv4 addresses", family, IsStatic, Json::array());
    return AddressesOf(adapter, "ipv6StaticAddresses", "Static IPv6 addresses", family, IsStatic, Json::array());
}

Aspect LeasedIpv4Addresses(const zelk::Adapter& adapter, bool bWanted)
{
    Aspect aspect = AddressesOf(adapter, "ipv4LeasedAddresses", "Leased IPv4 addresses", zelk::Family::IPV4, IsLeased,
                                bWanted ? Json() : Json::array());
    if (bWanted)
        aspect.isReached = [](const Json& now) { return !now.empty(); };
    return aspect;
}

} // namespace zelkctl
