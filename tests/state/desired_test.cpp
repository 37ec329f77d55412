// Desired states: their JSON form, and what is refused before anything is changed.

#include <gtest/gtest.h>

#include <state/desired/checks.h>
#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/simulated_windows.h>

using namespace zelk;

namespace
{

constexpr const char* WHOLE = R"({"schemaVersion": 1, "adapters": [
  {"adapter": "lan0", "enabled": true, "connectionName": "LAN", "hardwareAddress": "02-00-5E-10-00-0A", "mtu": 1500,
   "ipv4": {"dhcp": false, "addresses": ["192.0.2.20/24"], "gateways": ["192.0.2.1", {"address": "192.0.2.2", "metric": 7}],
            "dnsServers": ["192.0.2.53", "192.0.2.54"], "metric": 20, "mtu": 1400, "dnsSuffix": "example.org",
            "netbios": "disabled"},
   "ipv6": {"enabled": true, "addresses": [], "dnsServers": "automatic", "metric": "automatic"},
   "routes": [{"destination": "10.0.0.0/8", "nextHop": "192.0.2.9", "metric": 3, "store": "persistent"},
              {"destination": "2001:db8:1::/48", "store": "active"}]}],
  "identity": {"computerName": "pc", "primaryDnsSuffix": "", "workgroup": "HOME"}})";

TEST(DesiredState, IsReadBackAsItIsWritten)
{
    std::vector<Fault> faults;
    const DesiredState state = ParseDesiredState(WHOLE, faults);
    EXPECT_TRUE(faults.empty()) << faults[0].place << ' ' << faults[0].text;
    EXPECT_EQ(Json::parse(WHOLE), ToJson(state));
    EXPECT_EQ(7u, state.adapters[0].ipv4.gateways->at(1).metric);
    EXPECT_EQ(RouteStore::ACTIVE, state.adapters[0].routes->at(1).store);
    EXPECT_EQ(IpAddress::Unspecified(Family::IPV6), state.adapters[0].routes->at(1).nextHop);
}

/// A state, and the place and a part of the text of its one fault.
struct Wrong
{
    const char* state;
    const char* place;
    const char* text;
};

/// Of a machine with lan0, 192.0.2.10/24 and fe80::10, and lan1, a DHCP client at 198.51.100.7/24.
SimulatedWindows TwoAdapters()
{
    SimulatedWindows windows;
    windows.Add("lan0");
    windows.Add("lan1").ipv4.configured.dhcp = true;
    const auto give = [&](const char* name, const char* text) {
        const IpPrefix prefix = *IpPrefix::Parse(text);
        Address address;
        address.address = prefix.address;
        address.prefixLength = prefix.length;
        IpSettings& settings = windows.Find(name).Of(prefix.address.GetFamily());
        settings.addresses->push_back(address);
        if (!settings.configured.dhcp.value_or(true))
            settings.configured.addresses->push_back(prefix);
    };
    give("lan0", "192.0.2.10/24");
    give("lan0", "fe80::10/64");
    give("lan1", "198.51.100.7/24");
    return windows;
}

std::vector<Fault> FaultsOf(const char* text)
{
    std::vector<Fault> faults;
    const DesiredState state = ParseDesiredState(text, faults);
    if (!faults.empty())
        return faults;
    const SimulatedWindows windows = TwoAdapters();
    const auto adapters = ResolveAdapters(windows.machine, state, faults);
    CheckDesiredState(windows.machine, adapters, state, faults);
    return faults;
}

void ExpectFault(const Wrong& wrong, const std::string& state)
{
    const auto faults = FaultsOf(state.c_str());
    ASSERT_EQ(1u, faults.size()) << state << (faults.empty() ? "" : '\n' + faults[0].text + '\n' + faults.back().text);
    EXPECT_EQ(wrong.place, faults[0].place) << state;
    EXPECT_NE(std::string::npos, faults[0].text.find(wrong.text)) << state << '\n' << faults[0].text;
}

TEST(DesiredState, NamesThePlaceOfWhatCannotBeRead)
{
    const Wrong cases[] = {
        {"{\"adapters\": [", "", "not JSON: "},
        {"[]", "", "must be an object"},
        {R"({"schemaVersion": 2})", "/schemaVersion", "must be 1"},
        {R"({"adapter": []})", "/adapter", "not a known key; known here are schemaVersion, adapters, identity"},
        {R"({"adapters": [{"enabled": true}]})", "/adapters/0", "lacks \"adapter\""},
        {R"({"adapters": [{"adapter": "lan0", "ipv4": {"dhcp": true, "dhcp": false}}]})", "", "\"dhcp\" stands twice"},
        {R"({"adapters": [{"adapter": "lan0", "a~b/c": 1}]})", "/adapters/0/a~0b~1c", "not a known key"},
        {R"({"adapters": [{"adapter": "lan0", "mtu": -1}]})", "/adapters/0/mtu", "whole number"},
        {R"({"adapters": [{"adapter": "lan0", "ipv6": {"dhcp": true}}]})", "/adapters/0/ipv6/dhcp", "not a known key"},
        {R"({"adapters": [{"adapter": "lan0", "ipv4": {"netbios": "off"}}]})", "/adapters/0/ipv4/netbios",
         "\"disabled\""},
        {R"({"adapters": [{"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.20"]}}]})",
         "/adapters/0/ipv4/addresses/0", "IPv4 address with its prefix length, such as \"192.0.2.20/24\""},
        {R"({"adapters": [{"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.20/33"]}}]})",
         "/adapters/0/ipv4/addresses/0", "prefix length"},
        {R"({"adapters": [{"adapter": "lan0", "ipv4": {"dnsServers": ["2001:db8::53"]}}]})",
         "/adapters/0/ipv4/dnsServers/0", "must be an IPv4 address"},
        {R"({"adapters": [{"adapter": "lan0", "ipv4": {"dnsServers": "none"}}]})", "/adapters/0/ipv4/dnsServers",
         "must be a list, or \"automatic\""},
    };
    for (const Wrong& wrong : cases)
        ExpectFault(wrong, wrong.state);
}

TEST(DesiredState, NamesThePlaceOfWhatCannotBeMeant)
{
    const Wrong cases[] = {
        {R"("ipv4": {"addresses": ["224.0.0.1/4"]})", "ipv4/addresses/0", "multicast"},
        {R"("ipv4": {"addresses": ["127.0.0.1/8"]})", "ipv4/addresses/0", "loopback"},
        {R"("ipv4": {"addresses": ["192.0.2.255/24"]})", "ipv4/addresses/0", "broadcast"},
        {R"("ipv4": {"addresses": ["192.0.2.0/24"]})", "ipv4/addresses/0", "network itself"},
        {R"("ipv4": {"addresses": ["0.0.0.0/0"]})", "ipv4/addresses/0", "unspecified"},
        {R"("ipv4": {"addresses": ["255.255.255.255/32"]})", "ipv4/addresses/0", "reserved"},
        {R"("ipv4": {"addresses": ["192.0.2.9/0"]})", "ipv4/addresses/0", "prefix length 0"},
        {R"("ipv6": {"addresses": ["ff02::1/64"]})", "ipv6/addresses/0", "multicast"},
        {R"("ipv6": {"addresses": ["2001:db8::/64"]})", "ipv6/addresses/0", "all routers"},
        {R"("ipv4": {"addresses": ["192.0.2.9/24", "192.0.2.9/25"]})", "ipv4/addresses/1", "twice"},
        {R"("ipv4": {"addresses": ["198.51.100.7/24"]})", "ipv4/addresses/0", "address of adapter \"lan1\""},
        {R"("ipv4": {"dhcp": true, "addresses": ["192.0.2.9/24"]})", "ipv4/addresses", "where \"dhcp\" is true"},
        {R"("ipv4": {"gateways": ["203.0.113.1"]})", "ipv4/gateways/0", "none of the adapter's networks"},
        {R"("ipv4": {"gateways": ["192.0.2.255"]})", "ipv4/gateways/0", "broadcast"},
        {R"("ipv4": {"gateways": ["192.0.2.10"]})", "ipv4/gateways/0", "of the adapter itself"},
        {R"("ipv4": {"addresses": ["10.0.0.9/8"], "gateways": ["192.0.2.1"]})", "ipv4/gateways/0", "networks"},
        {R"("ipv4": {"gateways": [{"address": "192.0.2.1", "metric": 10000}]})", "ipv4/gateways/0/metric", "9999"},
        {R"("ipv4": {"dnsServers": ["192.0.2.53", "192.0.2.53"]})", "ipv4/dnsServers/1", "twice"},
        {R"("ipv6": {"mtu": 1279})", "ipv6/mtu", "1280"},
        {R"("ipv4": {"dnsSuffix": "a..b"})", "ipv4/dnsSuffix", "DNS domain"},
        {R"("ipv6": {"enabled": false, "addresses": ["2001:db8::9/64"]})", "ipv6", "false"},
        {R"("routes": [{"destination": "0.0.0.0/0", "nextHop": "192.0.2.1"}])", "routes/0/destination", "gateways"},
        {R"("routes": [{"destination": "10.1.0.0/8", "nextHop": "192.0.2.1"}])", "routes/0/destination",
         "did you mean 10.0.0.0/8?"},
        {R"("routes": [{"destination": "10.0.0.0/8", "nextHop": "203.0.113.1"}])", "routes/0/nextHop", "networks"},
        {R"("hardwareAddress": "03-00-00-00-00-01")", "hardwareAddress", "group"},
        {R"("connectionName": "a=b")", "connectionName", "safely"},
        {R"("connectionName": "12")", "connectionName", "index"},
        {R"("connectionName": "LAN1")", "connectionName", "another adapter"},
    };
    for (Wrong wrong : cases)
    {
        const std::string place = std::string("/adapters/0/") + wrong.place;
        wrong.place = place.c_str();
        ExpectFault(wrong, R"({"adapters": [{"adapter": "LAN0", )" + std::string(wrong.state) + "}]}");
    }
}

TEST(DesiredState, NamesAdaptersAsTheCommandLineDoes)
{
    const Wrong cases[] = {
        {R"("lan7")", "/adapters/0/adapter", "no adapter \"lan7\""},
        {R"("lan0"}, {"adapter": "index:1")", "/adapters/1/adapter", "already"},
        {R"("guid:{00000001-0000-0000-0000-000000000000}"}, {"adapter": "#1")", "/adapters/1/adapter", "already"},
        {R"("lan1", "ipv4": {"dhcp": false})", "/adapters/0/ipv4", "needs \"addresses\""},
        {R"("lan1", "ipv4": {"dnsServers": []})", "/adapters/0/ipv4/dnsServers", "at least one"},
        {R"("lan0", "ipv4": {"addresses": ["10.0.0.9/8"]}}, {"adapter": "lan1", "ipv4": {"addresses": ["10.0.0.9/8"]})",
         "/adapters/1/ipv4/addresses/0", "of adapter \"lan0\" too"},
        {R"("lan0"}], "identity": {"computerName": "a.b"}, "adapters2": [{"adapter": "lan0")", "/adapters2", "key"},
    };
    for (const Wrong& wrong : cases)
        ExpectFault(wrong, R"({"adapters": [{"adapter": )" + std::string(wrong.state) + "}]}");
}

TEST(Export, LeavesOutWhatIsInUseOtherwiseThanConfigured)
{
    SimulatedWindows windows = TwoAdapters();
    windows.Find("lan0").ipv4.configured.dnsServers = std::vector{*IpAddress::Parse("192.0.2.53")};
    auto result = ExportState(windows.machine, ExportedAdapters(windows.machine), false);
    EXPECT_EQ(1u, result.leftOut.size()) << "its only server is not in use";
    EXPECT_FALSE(result.state.adapters[0].ipv4.dnsServers);
    EXPECT_EQ("192.0.2.10/24", result.state.adapters[0].ipv4.addresses->at(0).ToText());
    EXPECT_EQ(true, result.state.adapters[1].ipv4.dhcp);
    EXPECT_FALSE(result.state.adapters[1].ipv4.addresses) << "DHCP gives them";

    windows.Settle();
    result = ExportState(windows.machine, ExportedAdapters(windows.machine), false);
    EXPECT_TRUE(result.leftOut.empty());
    std::vector<Fault> faults;
    EXPECT_TRUE(MakePlan(windows.machine, result.state, faults).differences.empty());
    EXPECT_TRUE(faults.empty());
}

} // namespace
