// Addresses, prefixes and stored routes as text. The C library has another parser of the same language.

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include <arpa/inet.h>

#include <state/machine/persistent_route.h>
#include <state/values/ip_prefix.h>
#include <support/values/ipv6_groups.h>

#include "fuzz.h"

namespace
{

using zelk::IpAddress;
using zelk::IpPrefix;

template <class Bytes>
std::optional<IpAddress> ParseElsewhere(int family, std::string_view text)
{
    Bytes bytes;
    const bool whole = text.find('\0') == std::string_view::npos;
    if (!whole || ::inet_pton(family, std::string(text).c_str(), bytes.data()) != 1)
        return std::nullopt;
    return IpAddress(bytes);
}

std::string TextElsewhere(const IpAddress& address)
{
    std::array<char, INET6_ADDRSTRLEN> text = {};
    ::inet_ntop(address.IsIpv4() ? AF_INET : AF_INET6, address.Bytes().data(), text.data(), text.size());
    return text.data();
}

void TryAddress(std::string_view text)
{
    const auto address = IpAddress::Parse(text);
    const auto ipv4 = ParseElsewhere<IpAddress::Ipv4Bytes>(AF_INET, text);
    fuzz::Require(address == (ipv4 ? ipv4 : ParseElsewhere<IpAddress::Ipv6Bytes>(AF_INET6, text)));
    if (!address)
        return;
    const std::string printed = address->ToText();
    fuzz::Require(IpAddress::Parse(printed) == address);
    // The C library writes the deprecated addresses that hold one of IPv4, such as ::192.0.2.1, with a dotted tail.
    const std::string elsewhere = TextElsewhere(*address);
    fuzz::Require(printed == elsewhere || (elsewhere.starts_with("::") && elsewhere.find('.') != std::string::npos &&
                                           printed.find('.') == std::string::npos));
    if (const auto length = zelk::PrefixLengthOfMask(*address))
        fuzz::Require(IpPrefix{*IpAddress::Parse("255.255.255.255"), *length}.Network().address == address);
}

void CompareGroups(std::string_view text, bool parsed, const velmor::Ipv6Groups& groups)
{
    const auto address = IpAddress::Parse(text);
    if (!address || address->IsIpv4() || text.find('.') != std::string_view::npos)
        return;
    fuzz::Require(parsed == (velmor::CountSingleColons(text) > 0));
    for (std::size_t i = 0; parsed && i < groups.size(); ++i)
        fuzz::Require(groups[i] == (address->Bytes()[2 * i] << 8 | address->Bytes()[2 * i + 1]));
}

/// As the trace writes them. It takes more than addresses; those it reads as they are meant.
void TryGroups(std::string_view text)
{
    velmor::Ipv6Groups groups = {};
    const bool parsed = velmor::ParseIpv6Groups(text, groups);
    const std::wstring wide(text.begin(), text.end());
    velmor::Ipv6Groups wideGroups = {};
    fuzz::Require(velmor::ParseIpv6Groups(std::wstring_view(wide), wideGroups) == parsed &&
                  (!parsed || wideGroups == groups));
    CompareGroups(text, parsed, groups);
}

void TryPrefix(std::string_view text)
{
    const auto prefix = IpPrefix::Parse(text);
    if (!prefix)
        return;
    fuzz::Require(prefix->length <= zelk::BitsOf(prefix->address.GetFamily()));
    fuzz::Require(IpAddress::Parse(fuzz::TakeUntil(text, '/')) == prefix->address);
    fuzz::Require(text == std::to_string(prefix->length));
    fuzz::Require(IpPrefix::Parse(prefix->ToText()) == prefix);
    fuzz::Require(prefix->Network().Network() == prefix->Network());
    fuzz::Require(prefix->Contains(prefix->address) && prefix->Contains(prefix->Network().address));
}

/// Its parts are those of the text; only zeros before the metric do not come back.
void TryRoute(std::string_view text)
{
    const auto route = zelk::ParsePersistentRoute(text);
    if (!route)
        return;
    fuzz::Require(IpAddress::Parse(fuzz::TakeUntil(text, ',')) == route->destination.address);
    fuzz::Require(zelk::PrefixLengthOfMask(*IpAddress::Parse(fuzz::TakeUntil(text, ','))) == route->destination.length);
    fuzz::Require(IpAddress::Parse(fuzz::TakeUntil(text, ',')) == route->nextHop);
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size() - 1));
    fuzz::Require(text == std::to_string(*route->metric));
}

} // namespace

void fuzz::Try(std::string_view text)
{
    TryAddress(text);
    TryGroups(text);
    TryPrefix(text);
    TryRoute(text);
}
