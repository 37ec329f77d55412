// What the schema of desired states takes is what the parser takes. check_schema.py validates what is written here.

#include <gtest/gtest.h>

#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/simulated_windows.h>
#include <support/files.h>

using namespace zelk;

namespace
{

TEST(DesiredState, IsWrittenForTheValidator)
{
    const auto write = [](std::wstring_view name, const Json& json) {
        testing_support::WriteFileBytes(testing_support::BesideProgram(name), json.dump(2) + '\n');
    };
    SimulatedWindows windows;
    Adapter& adapter = windows.Add("lan0");
    adapter.driver.hardwareAddress = HardwareAddress::Parse("02-00-5E-10-00-0A");
    adapter.hardwareAddress = adapter.driver.hardwareAddress;
    windows.Add("lan1").ipv4.configured.dhcp = true;
    write(L"desired-state.schema.json", DesiredStateSchema());
    write(L"exported.json", ToJson(ExportState(windows.machine, ExportedAdapters(windows.machine), true).state));
    std::vector<Fault> faults;
    const DesiredState state = ParseDesiredState(
        R"({"adapters": [{"adapter": "lan0", "mtu": 1500, "ipv4": {"gateways": [{"address": "192.0.2.1", "metric": 7}],
            "dnsServers": ["192.0.2.53"], "metric": 20}, "routes": [{"destination": "10.0.0.0/8", "store": "active"}]}]})",
        faults);
    EXPECT_TRUE(faults.empty());
    write(L"desired.json", ToJson(state));
}

} // namespace
