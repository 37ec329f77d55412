#include <state/fields/item.h>

namespace zelk
{
namespace
{

constexpr Field<IpSettings> IP_SETTINGS[] = {
    Item<IpSettings, &IpSettings::enabled>("enabled", "Enabled", "Whether the protocol is bound to the adapter."),
    Item<IpSettings, &IpSettings::dhcp>("dhcp", "DHCP", "Whether the adapter is a DHCP client."),
    Item<IpSettings, &IpSettings::addresses>("addresses", "Addresses", "Unicast addresses in use."),
    Item<IpSettings, &IpSettings::gateways>("gateways", "Default gateways", "Next hops of the default routes in use."),
    Item<IpSettings, &IpSettings::dnsServers>("dnsServers", "DNS servers", "Servers in their order of preference."),
    Item<IpSettings, &IpSettings::dnsSuffix>("dnsSuffix", "DNS suffix",
                                             "Connection-specific suffix; empty where there is none."),
    Item<IpSettings, &IpSettings::metric>("metric", "Interface metric",
                                          "Added to the metrics of the interface's routes."),
    Item<IpSettings, &IpSettings::automaticMetric>("automaticMetric", "Automatic metric",
                                                   "Whether the system chose the interface metric."),
    Item<IpSettings, &IpSettings::mtu>("mtu", "MTU", "Largest packet of the family.", "bytes"),
    Item<IpSettings, &IpSettings::autoconfiguration>("autoconfiguration", "Automatic private addressing",
                                                     "Whether the adapter gives itself an address of 169.254 where no "
                                                     "DHCP server answers; IPv4 only."),
    Item<IpSettings, &IpSettings::netbios>("netbios", "NetBIOS over TCP/IP", "Whether it is enabled; IPv4 only."),
    Item<IpSettings, &IpSettings::lease>("lease", "DHCP lease", "What the DHCP server gave; IPv4 only."),
    Item<IpSettings, &IpSettings::dhcpIaid>("dhcpIaid", "DHCPv6 IAID",
                                            "Identity association of the DHCPv6 client; IPv6 only."),
    Item<IpSettings, &IpSettings::dhcpDuid>("dhcpDuid", "DHCPv6 DUID",
                                            "Unique identifier of the DHCPv6 client; IPv6 only."),
    Item<IpSettings, &IpSettings::configured>("configured", "Configured",
                                              "What is stored and will be in use when the adapter is set up anew."),
};

constexpr Field<ConfiguredIp> CONFIGURED_IP[] = {
    Item<ConfiguredIp, &ConfiguredIp::source>("source", "Source", "From where addresses and gateways are known."),
    Item<ConfiguredIp, &ConfiguredIp::dhcp>("dhcp", "DHCP", "Whether the adapter is to be a DHCP client."),
    Item<ConfiguredIp, &ConfiguredIp::addresses>("addresses", "Addresses", "Static addresses with prefix lengths."),
    Item<ConfiguredIp, &ConfiguredIp::gateways>("gateways", "Default gateways", "Static default gateways."),
    Item<ConfiguredIp, &ConfiguredIp::dnsServers>("dnsServers", "DNS servers",
                                                  "Static servers in their order of preference."),
    Item<ConfiguredIp, &ConfiguredIp::dnsSuffix>("dnsSuffix", "DNS suffix",
                                                 "The connection's own suffix; empty where none is set."),
    Item<ConfiguredIp, &ConfiguredIp::metric>("metric", "Interface metric", "Metric of the interface."),
    Item<ConfiguredIp, &ConfiguredIp::mtu>("mtu", "MTU", "Largest packet of the family.", "bytes"),
    Item<ConfiguredIp, &ConfiguredIp::autoconfiguration>("autoconfiguration", "Automatic private addressing",
                                                         "Whether it is allowed; IPv4 only."),
    Item<ConfiguredIp, &ConfiguredIp::netbios>("netbios", "NetBIOS over TCP/IP", "How it is set; IPv4 only."),
};

constexpr Field<Address> ADDRESS[] = {
    Item<Address, &Address::address>("address", "Address", "The address."),
    Item<Address, &Address::prefixLength>("prefixLength", "Prefix length", "Length of the on-link prefix.", "bits"),
    Item<Address, &Address::origin>("origin", "Origin", "Who gave the address."),
    Item<Address, &Address::dadState>("dadState", "DAD state", "State of duplicate-address detection."),
    Item<Address, &Address::validLifetime>("validLifetime", "Valid lifetime", "Until the address goes.", "seconds"),
    Item<Address, &Address::preferredLifetime>("preferredLifetime", "Preferred lifetime",
                                               "Until no new connection uses it.", "seconds"),
};

constexpr Field<Gateway> GATEWAY[] = {
    Item<Gateway, &Gateway::address>("address", "Address", "Address of the gateway."),
    Item<Gateway, &Gateway::metric>("metric", "Metric", "Metric of the default route; null where it is automatic."),
};

constexpr Field<Lease> LEASE[] = {
    Item<Lease, &Lease::address>("address", "Leased address", "The address with its prefix length."),
    Item<Lease, &Lease::server>("server", "DHCP server", "Who gave the lease."),
    Item<Lease, &Lease::obtained>("obtained", "Lease obtained", "When it was given, in UTC."),
    Item<Lease, &Lease::expires>("expires", "Lease expires", "When it ends, in UTC."),
    Item<Lease, &Lease::gateways>("gateways", "Gateways from DHCP", "Default gateways that came with it."),
    Item<Lease, &Lease::dnsServers>("dnsServers", "DNS servers from DHCP", "DNS servers that came with it."),
    Item<Lease, &Lease::dnsSuffix>("dnsSuffix", "DNS suffix from DHCP", "DNS suffix that came with it."),
};

constexpr Field<Route> ROUTE[] = {
    Item<Route, &Route::destination>("destination", "Destination", "Destination network."),
    Item<Route, &Route::nextHop>("nextHop", "Next hop", "Gateway; 0.0.0.0 or :: for a destination on the link."),
    Item<Route, &Route::metric>("metric", "Metric", "The route's own metric."),
    Item<Route, &Route::store>("store", "Store", "Where the route stands."),
    Item<Route, &Route::origin>("origin", "Origin", "Who made the route."),
    Item<Route, &Route::protocol>("protocol", "Protocol", "How the route got into the table."),
};

} // namespace

template <>
FieldTable<IpSettings> FieldsOf()
{
    return {"ipSettings", IP_SETTINGS};
}

template <>
FieldTable<ConfiguredIp> FieldsOf()
{
    return {"configuredIp", CONFIGURED_IP};
}

template <>
FieldTable<Address> FieldsOf()
{
    return {"address", ADDRESS};
}

template <>
FieldTable<Gateway> FieldsOf()
{
    return {"gateway", GATEWAY};
}

template <>
FieldTable<Lease> FieldsOf()
{
    return {"lease", LEASE};
}

template <>
FieldTable<Route> FieldsOf()
{
    return {"route", ROUTE};
}

} // namespace zelk
