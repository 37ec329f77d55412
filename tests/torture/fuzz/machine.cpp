#include "machine.h"

namespace fuzz
{
namespace
{

using namespace zelk;

Adapter MakeAdapter(std::uint32_t index, const char* guid, const char* hardwareAddress)
{
    Adapter adapter;
    adapter.index = adapter.ipv6Index = index;
    adapter.guid = Guid::Parse(guid);
    adapter.connectionName = adapter.friendlyName = "lan" + std::to_string(index - 1);
    adapter.hardwareAddress = HardwareAddress::Parse(hardwareAddress);
    adapter.classKey = "000" + std::to_string(index);
    adapter.deviceInstance = "ROOT\\NET\\" + *adapter.classKey;
    adapter.kind = AdapterKind::PHYSICAL;
    adapter.status = AdapterStatus::UP;
    adapter.enabled = adapter.present = adapter.mediaConnected = true;
    adapter.mtu = 1500;
    adapter.ipv4.enabled = adapter.ipv6.enabled = true;
    adapter.ipv4.dhcp = adapter.ipv4.configured.dhcp = false;
    adapter.routes.emplace();
    return adapter;
}

Machine MakeMachine()
{
    Machine machine;
    machine.adapters = {MakeAdapter(1, "{00000001-0000-0000-0000-4E6574446576}", "02-00-5E-10-00-0A"),
                        MakeAdapter(2, "{00000002-0000-0000-0000-4E6574446576}", "02-00-5E-10-00-0B")};
    IpSettings& ipv4 = machine.adapters[0].ipv4;
    ipv4.configured.addresses = {*IpPrefix::Parse("192.0.2.10/24")};
    ipv4.configured.gateways = {{*IpAddress::Parse("192.0.2.1"), 5}};
    ipv4.configured.dnsServers = Automatic();
    ipv4.gateways = ipv4.configured.gateways;
    return machine;
}

} // namespace

const zelk::Machine& SmallMachine()
{
    static const Machine machine = MakeMachine();
    return machine;
}

} // namespace fuzz
