#include "fuzz.h"

namespace fuzz
{
namespace
{

using namespace zelk;

Adapter MakeAdapter(std::uint32_t index)
{
    const std::string number = std::to_string(index);
    Adapter adapter;
    adapter.index = adapter.ipv6Index = index;
    adapter.guid = Guid::Parse("0000000" + number + "-0000-0000-0000-4E6574446576");
    adapter.connectionName = "lan" + number;
    adapter.hardwareAddress = HardwareAddress::Parse("02005E10000" + number);
    adapter.deviceInstance = "ROOT\\NET\\" + number;
    adapter.kind = AdapterKind::PHYSICAL;
    adapter.status = AdapterStatus::UP;
    adapter.enabled = adapter.present = adapter.ipv4.enabled = adapter.ipv6.enabled = true;
    adapter.ipv4.dhcp = adapter.ipv4.configured.dhcp = false;
    adapter.routes.emplace();
    for (const Family family : FAMILIES)
    {
        IpSettings& ip = adapter.Of(family);
        ip.configured.addresses.emplace(), ip.addresses.emplace();
        ip.configured.gateways.emplace(), ip.gateways.emplace();
        ip.configured.dnsServers = Automatic(), ip.dnsServers.emplace();
    }
    return adapter;
}

Machine MakeMachine()
{
    Machine machine;
    machine.adapters = {MakeAdapter(0), MakeAdapter(1)};
    IpSettings& ipv4 = machine.adapters[0].ipv4;
    ipv4.configured.addresses = {*IpPrefix::Parse("192.0.2.10/24")};
    ipv4.addresses = {{*IpAddress::Parse("192.0.2.10"), 24, AddressOrigin::MANUAL, DadState::PREFERRED, {}, {}}};
    ipv4.configured.gateways = ipv4.gateways = {{*IpAddress::Parse("192.0.2.1"), 5}};
    return machine;
}

} // namespace

const zelk::Machine& SmallMachine()
{
    static const Machine machine = MakeMachine();
    return machine;
}

} // namespace fuzz
