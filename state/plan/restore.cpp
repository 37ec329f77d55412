#include <state/plan/restore.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

#include <state/desired/export.h>

namespace zelk
{
namespace
{

/// Of a whole configuration only what has these paths.
DesiredAdapter Select(const DesiredAdapter& whole, const std::set<std::string>& paths)
{
    DesiredAdapter part;
    part.adapter = whole.adapter;
    const auto take = [&](const std::string& path, auto& to, const auto& from) {
        if (paths.contains(path))
            to = from;
    };
    take("enabled", part.enabled, whole.enabled);
    take("connectionName", part.connectionName, whole.connectionName);
    take("hardwareAddress", part.hardwareAddress, whole.hardwareAddress);
    take("routes", part.routes, whole.routes);
    for (const Family family : FAMILIES)
    {
        const std::string start = PathPrefixOf(family);
        DesiredIp& to = part.Of(family);
        const DesiredIp& from = whole.Of(family);
        take(start + "dhcp", to.dhcp, from.dhcp);
        take(start + "addresses", to.addresses, from.addresses);
        take(start + "gateways", to.gateways, from.gateways);
        take(start + "dnsServers", to.dnsServers, from.dnsServers);
        take(start + "metric", to.metric, from.metric);
        take(start + "mtu", to.mtu, from.mtu);
        take(start + "enabled", to.enabled, from.enabled);
        take(start + "dnsSuffix", to.dnsSuffix, from.dnsSuffix);
        take(start + "netbios", to.netbios, from.netbios);
    }
    return part;
}

std::map<Guid, std::set<std::string>> TouchedPaths(const std::vector<Step>& steps)
{
    std::map<Guid, std::set<std::string>> touched;
    for (const Step& step : steps)
        if (step.guid)
            touched[*step.guid].insert(step.touches.begin(), step.touches.end());
    return touched;
}

/// What nobody can say how it was configured. IPv4 settings need their origin, or restoring them would take away what
/// is in use.
std::set<std::string> UnknownPaths(const DesiredAdapter& whole)
{
    std::set<std::string> unknown;
    const auto require = [&](const std::string& path, bool isKnown) {
        if (!isKnown)
            unknown.insert(path);
    };
    require("routes", whole.routes.has_value());
    for (const Family family : FAMILIES)
    {
        const std::string start = PathPrefixOf(family);
        const DesiredIp& ip = whole.Of(family);
        const bool isOriginKnown = family == Family::IPV6 || ip.dhcp;
        require(start + "addresses", isOriginKnown && (ip.addresses || ip.dhcp == true));
        require(start + "gateways", isOriginKnown && ip.gateways);
        require(start + "dnsServers", ip.dnsServers.has_value());
    }
    return unknown;
}

} // namespace

std::vector<Target> RestoredTargets(const Machine& before, const std::vector<Step>& steps)
{
    std::vector<Target> targets;
    for (const auto& [guid, touched] : TouchedPaths(steps))
        if (const Adapter* const adapter = FindAdapter(before, guid))
        {
            DesiredAdapter whole = ConfigurationOf(*adapter);
            whole.connectionName = adapter->connectionName;
            std::set<std::string> known;
            std::ranges::set_difference(touched, UnknownPaths(whole), std::inserter(known, known.end()));
            targets.push_back({guid, NameOf(*adapter), "", Select(whole, known), true});
        }
    return targets;
}

std::vector<Difference> UnknownBefore(const Machine& before, const std::vector<Step>& steps)
{
    std::vector<Difference> unknown;
    for (const auto& [guid, touched] : TouchedPaths(steps))
        if (const Adapter* const adapter = FindAdapter(before, guid))
            for (const std::string& path : UnknownPaths(ConfigurationOf(*adapter)))
                if (touched.contains(path))
                    unknown.push_back({NameOf(*adapter), path, Json(), Json()});
    return unknown;
}

DesiredIdentity RestoredIdentity(const Machine& before, const std::vector<Step>& steps)
{
    std::set<std::string> touched;
    for (const Step& step : steps)
        touched.insert(step.touches.begin(), step.touches.end());
    DesiredIdentity identity;
    if (touched.contains("identity.computerName"))
        identity.computerName = before.identity.configured.computerName;
    if (touched.contains("identity.primaryDnsSuffix"))
        identity.primaryDnsSuffix = before.identity.configured.primaryDnsSuffix;
    if (touched.contains("identity.workgroup"))
        identity.workgroup = before.identity.workgroup;
    return identity;
}

} // namespace zelk
