// One reading of the machine against the answers of the real DLL and the kernel's facts.

#include <algorithm>
#include <deque>
#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include <e2e/network.h>
#include <state/fields/words.h>
#include <state/reading/read_machine.h>

using testing_support::DwordData;
using testing_support::RegistryData;
using testing_support::StringData;

namespace
{

/// What is known of an adapter, by its field.
using Answers = std::map<std::string, std::string>;

constexpr const wchar_t* SERVICES = L"SYSTEM\\CurrentControlSet\\services\\";

std::string Text(const velmor::string& text)
{
    return text.narrow_c_str();
}

std::string Text(const velmor::ip_address& address)
{
    return Text(velmor::string(address));
}

std::string Text(const zelk::IpAddress& address)
{
    return address.ToText();
}

/// In an order of their own: some tables have none.
template <class List, class ToText>
std::string Sorted(const List& list, ToText toText)
{
    std::multiset<std::string> texts;
    for (const auto& item : list)
        texts.insert(toText(item));
    std::string all;
    for (const std::string& text : texts)
        all += text + ' ';
    return all;
}

const char* YesNo(bool answer)
{
    return answer ? "yes" : "no";
}

std::string Text(bool flag)
{
    return YesNo(flag);
}

/// What the library answers to a question that gives a value of this type.
template <class Value, class Question, class... Arguments>
std::string Ask(Question question, const TOLVA::NIC_INFO& nic, Arguments... arguments)
{
    Value value{};
    return question(nic, arguments..., value) ? Text(value) : "unknown";
}

void AddAddresses(const TOLVA::NIC_INFO& nic, bool vista, Answers& answers)
{
    std::vector<TOLVA::ASSOC_IP_ADDR> addresses;
    TOLVA::GetAdaptersIpAddrs(nic, addresses);
    answers["addresses"] = Sorted(addresses, [vista](const TOLVA::ASSOC_IP_ADDR& address) {
        const std::string state = vista ? std::to_string(address.enDadState) + YesNo(address.bAutomatic) : "";
        return Text(address.IpAddress) + '/' + std::to_string(address.SubnetPrefix) + ' ' + state;
    });
    std::vector<TOLVA::ROUTE_INFO> routes;
    TOLVA::GetAdapterRoutes(nic, routes);
    answers["routes"] = Sorted(routes, [](const TOLVA::ROUTE_INFO& route) {
        return Text(route.Destination) + '/' + std::to_string(route.PrefixLength) + ' ' + Text(route.NextHop) + ' ' +
               std::to_string(route.ulMetric);
    });
    std::vector<velmor::ip_address> list;
    TOLVA::GetDefaultGatewayList(nic, TOLVA::FAMILY_BOTH, list);
    answers["gateways"] = Sorted(list, [](const auto& address) { return Text(address); });
    list.clear();
    TOLVA::GetDnsServerList(nic, list);
    answers["dnsServers"] = Sorted(list, [](const auto& address) { return Text(address); });
}

void AddSettings(const TOLVA::NIC_INFO& nic, Answers& answers)
{
    answers["dhcp4"] = Ask<bool>(&TOLVA::IsDhcpEnabled, nic, TOLVA::FAMILY_IPV4);
    answers["dhcp6"] = Ask<bool>(&TOLVA::IsDhcpEnabled, nic, TOLVA::FAMILY_IPV6);
    answers["dns4"] = Ask<bool>(&TOLVA::IsDnsAutomatic, nic, TOLVA::FAMILY_IPV4);
    answers["dns6"] = Ask<bool>(&TOLVA::IsDnsAutomatic, nic, TOLVA::FAMILY_IPV6);
    answers["gateway4"] = Ask<bool>(&TOLVA::IsGatewayAutomatic, nic, TOLVA::FAMILY_IPV4);
    answers["domain"] = Ask<velmor::string>(&TOLVA::GetAdapterDomain, nic);
    answers["autoconfiguration"] = Ask<bool>(&TOLVA::GetAutoconfigStatus, nic);
    answers["netbios"] = Ask<bool>(&TOLVA::GetNetBIOSOverTcpipStatus, nic);
    answers["speedDuplex"] = Ask<velmor::string>(&TOLVA::GetAdapterSpeed, nic);
    answers["sheet"] = Ask<bool>(&TOLVA::CanChangeAdapterOptions, nic);
    answers["name"] = Ask<velmor::string>(&TOLVA::GetAdapterIpconfigName, nic);
}

/// The library's answers.
Answers AnswersOf(const TOLVA::NIC_INFO& nic, bool vista)
{
    Answers answers = {{"guid", Text(nic.sNicGuid)},
                       {"friendlyName", Text(nic.sNicFriendlyName)},
                       {"driver", Text(nic.sNicDesc)},
                       {"classKey", Text(nic.sNicEnum)},
                       {"device", Text(nic.sNicPci)},
                       {"deviceName", Text(nic.sNicName)},
                       {"hardwareAddress", Text(nic.sNicHwAddr)}};
    answers["type"] = nic.sNicType == velmor::string(L"ETHERNET") ? "ethernet" : Text(nic.sNicType);
    unsigned long index = 0;
    TOLVA::GetAdapterIndex(nic, index);
    answers["index"] = std::to_string(index);
    TOLVA::TOLVA_OPER_STATUS status = TOLVA::OPER_STATUS_UNKNOWN;
    TOLVA::GetAdapterOperStatus(nic, status);
    answers["up"] = YesNo(status == TOLVA::OPER_STATUS_UP);
    TOLVA::FAMILY_TYPE families = TOLVA::FAMILY_IPV6;
    TOLVA::AddressFamilySupported(nic, families);
    answers["ipv4"] = YesNo(families != TOLVA::FAMILY_IPV6);
    double speed = 0;
    TOLVA::GetAdapterLinkSpeed(nic, speed);
    answers["speed"] = std::to_string(speed);
    velmor::ip_address server;
    TOLVA::GetDhcpServer(nic, server);
    answers["dhcpServer"] = Text(server);
    AddAddresses(nic, vista, answers);
    AddSettings(nic, answers);
    return answers;
}

std::string AddressLine(const zelk::Address& address, bool vista)
{
    std::string line = address.address.ToText() + '/' + std::to_string(address.prefixLength.value()) + ' ';
    EXPECT_EQ(vista, address.dadState.has_value());
    if (vista)
        line +=
            std::to_string(static_cast<int>(*address.dadState)) + YesNo(address.origin != zelk::AddressOrigin::MANUAL);
    return line;
}

template <class T>
std::vector<T> Joined(const std::optional<std::vector<T>>& first, const std::optional<std::vector<T>>& second)
{
    std::vector<T> all = first.value_or(std::vector<T>());
    if (second)
        all.insert(all.end(), second->begin(), second->end());
    return all;
}

void AddAddresses(const zelk::Adapter& adapter, bool vista, Answers& answers)
{
    // Before Vista the library knows addresses of IPv4 alone.
    const auto addresses =
        vista ? Joined(adapter.ipv4.addresses, adapter.ipv6.addresses) : adapter.ipv4.addresses.value();
    answers["addresses"] =
        Sorted(addresses, [vista](const zelk::Address& address) { return AddressLine(address, vista); });
    answers["routes"] = Sorted(adapter.routes.value(), [](const zelk::Route& route) {
        return route.destination.ToText() + ' ' + Text(route.nextHop) + ' ' + std::to_string(route.metric.value());
    });
    answers["gateways"] = Sorted(Joined(adapter.ipv4.gateways, adapter.ipv6.gateways),
                                 [](const zelk::Gateway& gateway) { return Text(gateway.address); });
    answers["dnsServers"] = Sorted(Joined(adapter.ipv4.dnsServers, adapter.ipv6.dnsServers),
                                   [](const zelk::IpAddress& address) { return Text(address); });
}

template <class T>
const char* IsAutomatic(const std::optional<zelk::AutomaticOr<T>>& setting)
{
    return YesNo(std::holds_alternative<zelk::Automatic>(setting.value()));
}

void AddSettings(const zelk::Adapter& adapter, Answers& answers)
{
    answers["dhcp4"] = YesNo(adapter.ipv4.configured.dhcp.value());
    answers["dhcp6"] = YesNo(adapter.ipv6.dhcp.value());
    answers["dns4"] = IsAutomatic(adapter.ipv4.configured.dnsServers);
    answers["dns6"] = IsAutomatic(adapter.ipv6.configured.dnsServers);
    answers["gateway4"] = YesNo(adapter.ipv4.configured.gateways->empty());
    answers["domain"] = adapter.ipv4.configured.dnsSuffix.value();
    answers["autoconfiguration"] = YesNo(adapter.ipv4.autoconfiguration.value());
    answers["netbios"] = YesNo(adapter.ipv4.netbios.value());
    answers["speedDuplex"] = adapter.driver.speedDuplex.value();
    answers["sheet"] = YesNo(adapter.canChangeOptions.value());
    answers["name"] = NameOf(adapter);
}

/// The same answers by the reading.
Answers AnswersOf(const zelk::Adapter& adapter, bool vista)
{
    Answers answers = {{"guid", adapter.guid.value().ToText()},
                       {"friendlyName", adapter.friendlyName.value()},
                       {"driver", adapter.driver.description.value()},
                       {"classKey", adapter.classKey.value()},
                       {"device", adapter.deviceInstance.value()},
                       {"deviceName", DeviceNameOf(adapter).value()},
                       {"hardwareAddress", adapter.hardwareAddress.value().ToText()},
                       {"type", zelk::WordOf(adapter.type.value()).word},
                       {"index", std::to_string(adapter.index.value())},
                       {"up", YesNo(adapter.status == zelk::AdapterStatus::UP)},
                       {"ipv4", YesNo(adapter.ipv4.enabled.value())},
                       {"speed", std::to_string(static_cast<double>(adapter.receiveSpeed.value_or(0)) / 1000000)}};
    const bool leased = adapter.ipv4.lease && adapter.ipv4.lease->server;
    answers["dhcpServer"] = leased ? Text(*adapter.ipv4.lease->server) : "0.0.0.0";
    AddAddresses(adapter, vista, answers);
    AddSettings(adapter, answers);
    return answers;
}

/// What an installed Windows keeps of each link, each time a little different.
class Installed
{
public:
    Installed()
    {
        for (const Link& link : Links())
        {
            const std::wstring device = L"PCI\\" + Seeded::Enum(link);
            m_links.emplace_back(link, StringData(device), StringData(device));
            const std::wstring guid = link.sGuid.c_str();
            const bool first = m_keys.empty();
            Key(std::wstring(SERVICES) + L"Tcpip\\Parameters\\Interfaces\\" + guid,
                {{L"EnableDHCP", DwordData(first)},
                 {L"NameServer", StringData(first ? L"" : L"192.0.2.53")},
                 {L"DefaultGateway",
                  StringData(first ? std::wstring(1, L'\0') : std::wstring(L"192.0.2.1\0", 10), REG_MULTI_SZ)},
                 {L"Domain", StringData(L"example.org")},
                 {L"IPAutoconfigurationEnabled", DwordData(first)}});
            Key(std::wstring(SERVICES) + L"Tcpip6\\Parameters\\Interfaces\\" + guid,
                {{L"Dhcpv6State", DwordData(first)}, {L"NameServer", StringData(first ? L"2001:db8::53" : L"")}});
            Key(std::wstring(SERVICES) + L"NetBT\\Parameters\\Interfaces\\Tcpip_" + guid,
                {{L"NetbiosOptions", DwordData(first ? 2 : 0)}});
            const std::wstring classKey = std::wstring(CONTROL) + L"Class" + NETWORK + L"\\" + Seeded::Enum(link);
            Key(classKey, {{L"*SpeedDuplex", StringData(L"4")}});
            Key(classKey + L"\\Ndi\\params\\*SpeedDuplex\\Enum", {{L"4", StringData(L"100 Mbps Full Duplex")}});
        }
    }

private:
    void Key(const std::wstring& path, std::initializer_list<std::pair<const wchar_t*, RegistryData>> values)
    {
        const auto& key = m_keys.emplace_back(path);
        for (const auto& [name, data] : values)
            key.Set(L"", name, data);
    }

    std::deque<Seeded> m_links;
    std::deque<testing_support::RegistryKeyScope> m_keys;
};

TEST(Machine, IsWhatTheLibraryAnswers)
{
    const bool vista = Facts()["vista"];
    const Installed installed;
    std::vector<TOLVA::NIC_INFO> list;
    ASSERT_TRUE(TOLVA::GetAdapterList(list));
    const zelk::Machine machine = zelk::ReadMachine();
    EXPECT_TRUE(machine.problems.empty());
    EXPECT_EQ(3, std::ranges::count(machine.adapters, false, &zelk::Adapter::hidden));
    for (const TOLVA::NIC_INFO& nic : list)
    {
        const auto found =
            std::ranges::find(machine.adapters, zelk::Guid::Parse(Text(nic.sNicGuid)), &zelk::Adapter::guid);
        ASSERT_NE(machine.adapters.end(), found);
        EXPECT_TRUE(found->problems.empty());
        EXPECT_EQ(AnswersOf(nic, vista), AnswersOf(*found, vista));
    }
}

TEST(Machine, HasTheNamesThatTheLibraryAnswers)
{
    const zelk::Identity identity = zelk::ReadMachine().identity;
    const std::pair<bool (*)(velmor::string&), std::optional<std::string>> rows[] = {
        {&TOLVA::GetComputerNameW, identity.computerName},
        {&TOLVA::GetPrimaryDnsSuffix, identity.primaryDnsSuffix},
        {&TOLVA::GetFullComputerName, identity.fullComputerName},
        {&TOLVA::GetWorkgroupName, identity.workgroup}};
    for (const auto& [ask, name] : rows)
    {
        velmor::string answer;
        EXPECT_TRUE(ask(answer));
        EXPECT_EQ(Text(answer), name);
    }
}

} // namespace
