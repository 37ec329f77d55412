// The JSON form of desired states. check_desired.py holds what is written here against the schema.

#include <gtest/gtest.h>

#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/simulated_windows.h>
#include <support/files.h>

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

void Write(std::wstring_view name, const Json& json)
{
    testing_support::WriteFileBytes(testing_support::BesideProgram(name), json.dump(2) + '\n');
}

TEST(DesiredState, IsReadBackAsItIsWritten)
{
    std::vector<Fault> faults;
    const DesiredState state = ParseDesiredState(WHOLE, faults);
    EXPECT_TRUE(faults.empty()) << faults[0].place << ' ' << faults[0].text;
    EXPECT_EQ(Json::parse(WHOLE), ToJson(state));
    EXPECT_EQ(IpAddress::Unspecified(Family::IPV6), state.adapters[0].routes->at(1).nextHop);
    Write(L"desired.json", ToJson(state));
}

TEST(DesiredState, IsExportedAsItsSchemaSays)
{
    SimulatedWindows windows;
    Adapter& adapter = windows.Add("lan0");
    adapter.driver.hardwareAddress = HardwareAddress::Parse("02-00-5E-10-00-0A");
    adapter.hardwareAddress = adapter.driver.hardwareAddress;
    windows.Add("lan1").ipv4.configured.dhcp = true;
    Write(L"desired-state.schema.json", DesiredStateSchema());
    Write(L"exported.json", ToJson(ExportState(windows.machine, ExportedAdapters(windows.machine), true).state));
}

} // namespace
