#include "parser/ip_argument.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include "system/failure.h"
#include "system/number.h"
#include "system/text.h"

namespace zelkctl
{
namespace
{

/// The platform also reads ports, scopes, and IPv4 forms with missing or octal parts.
bool IsPlain(const velmor::ip_address& address, std::string_view text)
{
    if (address.is_ipv4())
        return ToUtf8(velmor::string(address)) == text;
    return address.is_ipv6() && text.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
}

/// 0.0.0.0 or ::, which no machine has.
bool IsUnspecified(const velmor::ip_address& address)
{
    return address == velmor::ip_address("0.0.0.0") || address == velmor::ip_address("::");
}

unsigned char ParsePrefixLength(const std::string& sName, const std::string& sText, const velmor::ip_address& address)
{
    const unsigned long ulLongest = address.is_ipv4() ? 32 : 128;
    const auto ulLength = ParseNumber(sText);
    if (!ulLength || *ulLength > ulLongest)
        throw WrongUse(sName, Quoted(sText) + " is no prefix length of an " + (address.is_ipv4() ? "IPv4" : "IPv6") +
                                  " address, 0 to " + std::to_string(ulLongest));
    return static_cast<unsigned char>(*ulLength);
}

/// `addressOf` gives the address of what `parse` made.
template <class Item, class AddressOf>
std::vector<Item> ParseEach(const std::string& sName, const std::vector<std::string>& texts,
                            Item (*parse)(const std::string&, const std::string&), AddressOf addressOf)
{
    std::vector<Item> items;
    for (const std::string& sText : texts)
    {
        const Item item = parse(sName, sText);
        if (IsUnspecified(std::invoke(addressOf, item)))
            throw WrongUse(sName, Quoted(sText) + " is no address of a machine");
        if (std::ranges::find(items, std::invoke(addressOf, item), addressOf) != items.end())
            throw WrongUse(sName, Quoted(sText) + " is there twice");
        items.push_back(item);
    }
    return items;
}

} // namespace

velmor::ip_address ParseAddress(const std::string& sName, const std::string& sText)
{
    const velmor::ip_address address(FromUtf8(sText));
    if (!IsPlain(address, sText))
        throw WrongUse(sName, Quoted(sText) + " is no IPv4 or IPv6 address");
    return address;
}

Network ParseNetwork(const std::string& sName, const std::string& sText)
{
    const std::size_t slash = sText.find('/');
    if (slash == std::string::npos)
        throw WrongUse(sName, Quoted(sText) + " lacks its prefix length, such as /24");
    const velmor::ip_address address = ParseAddress(sName, sText.substr(0, slash));
    return {address, ParsePrefixLength(sName, sText.substr(slash + 1), address)};
}

std::vector<velmor::ip_address> ParseAddresses(const std::string& sName, const std::vector<std::string>& texts)
{
    return ParseEach(sName, texts, ParseAddress, std::identity());
}

std::vector<Network> ParseNetworks(const std::string& sName, const std::vector<std::string>& texts)
{
    return ParseEach(sName, texts, ParseNetwork, &Network::address);
}

} // namespace zelkctl
