// The groups of an IPv6 text as the trace writes them. It takes more than addresses; those it reads as they are meant.

#include <string>

#include <state/values/ip_address.h>
#include <support/values/ipv6_groups.h>

#include "fuzz.h"

namespace
{

void TryAddress(std::string_view text, bool parsed, const velmor::Ipv6Groups& groups)
{
    const auto address = zelk::IpAddress::Parse(text);
    if (!address || address->IsIpv4() || text.find('.') != std::string_view::npos)
        return;
    fuzz::Require(parsed == (velmor::CountSingleColons(text) > 0));
    for (std::size_t i = 0; parsed && i < groups.size(); ++i)
        fuzz::Require(groups[i] == (address->Bytes()[2 * i] << 8 | address->Bytes()[2 * i + 1]));
}

} // namespace

void fuzz::Try(std::string_view text)
{
    velmor::Ipv6Groups groups = {};
    const bool parsed = velmor::ParseIpv6Groups(text, groups);
    const std::wstring wide(text.begin(), text.end());
    velmor::Ipv6Groups wideGroups = {};
    Require(velmor::ParseIpv6Groups(std::wstring_view(wide), wideGroups) == parsed &&
            (!parsed || wideGroups == groups));
    TryAddress(text, parsed, groups);
}
