#include "parser/ip_argument.h"

#include <algorithm>
#include <functional>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

/// `addressOf` gives the address of what `parse` made.
template <class Item, class AddressOf>
std::vector<Item> ParseEach(const std::string& sName, const std::vector<std::string>& texts,
                            Item (*parse)(const std::string&, const std::string&), AddressOf addressOf)
{
    std::vector<Item> items;
    for (const std::string& sText : texts)
    {
        const Item item = parse(sName, sText);
        if (std::invoke(addressOf, item).IsUnspecified())
            throw UsageError(sName, Quoted(sText) + " is not an address that a machine can have");
        if (std::ranges::find(items, std::invoke(addressOf, item), addressOf) != items.end())
            throw UsageError(sName, Quoted(sText) + " is given twice");
        items.push_back(item);
    }
    return items;
}

} // namespace

zelk::IpAddress ParseAddress(const std::string& sName, const std::string& sText)
{
    const auto address = zelk::IpAddress::Parse(sText);
    if (!address)
        throw UsageError(sName, Quoted(sText) + " is not an IPv4 or IPv6 address");
    return *address;
}

zelk::IpPrefix ParseNetwork(const std::string& sName, const std::string& sText)
{
    if (const auto prefix = zelk::IpPrefix::Parse(sText))
        return *prefix;
    const std::size_t slash = sText.find('/');
    if (slash == std::string::npos)
        throw UsageError(sName, Quoted(sText) + " needs a prefix length, such as /24");
    const zelk::IpAddress address = ParseAddress(sName, sText.substr(0, slash));
    throw UsageError(sName, Quoted(sText.substr(slash + 1)) + " is not a prefix length of an " +
                                (address.IsIpv4() ? "IPv4" : "IPv6") + " address, which is 0 to " +
                                std::to_string(zelk::BitsOf(address.GetFamily())));
}

std::vector<zelk::IpAddress> ParseAddresses(const std::string& sName, const std::vector<std::string>& texts)
{
    return ParseEach(sName, texts, ParseAddress, std::identity());
}

std::vector<zelk::IpPrefix> ParseNetworks(const std::string& sName, const std::vector<std::string>& texts)
{
    return ParseEach(sName, texts, ParseNetwork, &zelk::IpPrefix::address);
}

velmor::ip_address ToVelmor(const zelk::IpAddress& address)
{
    return velmor::ip_address(velmor::string(FromUtf8(address.ToText())));
}

} // namespace zelkctl
