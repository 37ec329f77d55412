// One reading of the machine against the answers of the real DLL and the kernel's facts.

#include <algorithm>
#include <deque>
#include <map>
#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include <e2e/network.h>
#include <state/fields/field.h>
#include <state/reading/read_machine.h>
#include <support/files.h>
#include <support/registry_json.h>

using namespace testing_support;
using zelk::Json;

namespace
{

/// What is known of an adapter, by its place in the reading's JSON.
using Answers = std::map<std::string, Json>;

Json Shown(bool flag)
{
    return flag;
}

std::string Shown(const velmor::string& text)
{
    return text.narrow_c_str();
}

std::string Shown(const velmor::ip_address& address)
{
    return Shown(velmor::string(address));
}

/// What the library answers to a question that gives a value of this type; null when it fails.
template <class Value, class Question, class... Arguments>
Json Ask(Question question, const TOLVA::NIC_INFO& nic, Arguments... arguments)
{
    Value value{};
    return question(nic, arguments..., value) ? Json(Shown(value)) : Json();
}

/// Items as texts, in an order of their own: some tables have none.
template <class List, class ToText>
Json Sorted(const List& list, ToText toText)
{
    std::multiset<std::string> texts;
    for (const auto& item : list)
        texts.insert(toText(item));
    return texts;
}

void AddLists(const TOLVA::NIC_INFO& nic, bool vista, Answers& answers)
{
    std::vector<TOLVA::ASSOC_IP_ADDR> addresses;
    TOLVA::GetAdaptersIpAddrs(nic, addresses);
    answers["/addresses"] = Sorted(addresses, [vista](const TOLVA::ASSOC_IP_ADDR& address) {
        const std::string state = WordOf(static_cast<zelk::DadState>(address.enDadState)).word;
        return Shown(address.IpAddress) + '/' + std::to_string(address.SubnetPrefix) +
               (vista ? ' ' + state + (address.bAutomatic ? " automatic" : "") : "");
    });
    std::vector<TOLVA::ROUTE_INFO> routes;
    TOLVA::GetAdapterRoutes(nic, routes);
    answers["/routes"] = Sorted(routes, [](const TOLVA::ROUTE_INFO& route) {
        return Shown(route.Destination) + '/' + std::to_string(route.PrefixLength) + ' ' + Shown(route.NextHop) + ' ' +
               std::to_string(route.ulMetric);
    });
    const auto shown = [](const velmor::ip_address& address) { return Shown(address); };
    std::vector<velmor::ip_address> list;
    TOLVA::GetDefaultGatewayList(nic, TOLVA::FAMILY_BOTH, list);
    answers["/gateways"] = Sorted(list, shown);
    list.clear();
    TOLVA::GetDnsServerList(nic, list);
    answers["/dnsServers"] = Sorted(list, shown);
}

/// The library's answers.
Answers AnswersOf(const TOLVA::NIC_INFO& nic, bool vista)
{
    unsigned long index = 0;
    TOLVA::GetAdapterIndex(nic, index);
    TOLVA::TOLVA_OPER_STATUS status = TOLVA::OPER_STATUS_UNKNOWN;
    TOLVA::GetAdapterOperStatus(nic, status);
    TOLVA::FAMILY_TYPE families = TOLVA::FAMILY_IPV6;
    TOLVA::AddressFamilySupported(nic, families);
    double speed = 0;
    TOLVA::GetAdapterLinkSpeed(nic, speed);
    velmor::ip_address server;
    TOLVA::GetDhcpServer(nic, server);
    Answers answers = {{"/guid", Shown(nic.sNicGuid)},
                       {"/friendlyName", Shown(nic.sNicFriendlyName)},
                       {"/driver/description", Shown(nic.sNicDesc)},
                       {"/classKey", Shown(nic.sNicEnum)},
                       {"/deviceInstance", Shown(nic.sNicPci)},
                       {"/deviceName", Shown(nic.sNicName)},
                       {"/hardwareAddress", Shown(nic.sNicHwAddr)},
                       {"/type", nic.sNicType == velmor::string(L"ETHERNET") ? "ethernet" : Shown(nic.sNicType)},
                       {"/index", index},
                       {"/up", status == TOLVA::OPER_STATUS_UP},
                       {"/speed", speed},
                       {"/ipv4/enabled", families != TOLVA::FAMILY_IPV6},
                       {"/dhcpServer", Shown(server)},
                       {"/ipv4/configured/dhcp", Ask<bool>(&TOLVA::IsDhcpEnabled, nic, TOLVA::FAMILY_IPV4)},
                       {"/ipv6/dhcp", Ask<bool>(&TOLVA::IsDhcpEnabled, nic, TOLVA::FAMILY_IPV6)},
                       {"/ipv4/automaticDns", Ask<bool>(&TOLVA::IsDnsAutomatic, nic, TOLVA::FAMILY_IPV4)},
                       {"/ipv6/automaticDns", Ask<bool>(&TOLVA::IsDnsAutomatic, nic, TOLVA::FAMILY_IPV6)},
                       {"/ipv4/automaticGateway", Ask<bool>(&TOLVA::IsGatewayAutomatic, nic, TOLVA::FAMILY_IPV4)},
                       {"/ipv4/configured/dnsSuffix", Ask<velmor::string>(&TOLVA::GetAdapterDomain, nic)},
                       {"/ipv4/autoconfiguration", Ask<bool>(&TOLVA::GetAutoconfigStatus, nic)},
                       {"/ipv4/netbios", Ask<bool>(&TOLVA::GetNetBIOSOverTcpipStatus, nic)},
                       {"/driver/speedDuplex", Ask<velmor::string>(&TOLVA::GetAdapterSpeed, nic)},
                       {"/canChangeOptions", Ask<bool>(&TOLVA::CanChangeAdapterOptions, nic)},
                       {"/name", Ask<velmor::string>(&TOLVA::GetAdapterIpconfigName, nic)}};
    AddLists(nic, vista, answers);
    return answers;
}

std::string Member(const Json& object, const char* key)
{
    return object.at(key).is_string() ? object.at(key).get<std::string>() : object.at(key).dump();
}

Json Both(const Json& adapter, const char* key)
{
    Json list = adapter["ipv4"][key];
    for (const Json& item : adapter["ipv6"][key].is_null() ? Json::array() : adapter["ipv6"][key])
        list.push_back(item);
    return list;
}

/// The reading, with what the library tells in another way.
Json Told(const zelk::Adapter& adapter, bool vista)
{
    Json json = ToJson(adapter);
    json["up"] = json["status"] == "up";
    json["speed"] = json["receiveSpeed"].is_null() ? 0 : json["receiveSpeed"].get<double>() / 1000000;
    json["dhcpServer"] = json["ipv4"]["lease"].is_null() ? "0.0.0.0" : Member(json["ipv4"]["lease"], "server");
    for (const char* const family : {"ipv4", "ipv6"})
        json[family]["automaticDns"] = json[family]["configured"]["dnsServers"] == "automatic";
    json["ipv4"]["automaticGateway"] = json["ipv4"]["configured"]["gateways"].empty();
    // Before Vista the library knows addresses of IPv4 alone.
    json["addresses"] = Sorted(vista ? Both(json, "addresses") : json["ipv4"]["addresses"], [vista](const Json& one) {
        EXPECT_EQ(vista, !one["dadState"].is_null());
        return Member(one, "address") + '/' + Member(one, "prefixLength") +
               (vista ? ' ' + Member(one, "dadState") + (one["origin"] != "manual" ? " automatic" : "") : "");
    });
    json["routes"] = Sorted(json["routes"], [](const Json& route) {
        return Member(route, "destination") + ' ' + Member(route, "nextHop") + ' ' + Member(route, "metric");
    });
    json["gateways"] = Sorted(Both(json, "gateways"), [](const Json& one) { return Member(one, "address"); });
    json["dnsServers"] = Sorted(Both(json, "dnsServers"), [](const Json& one) { return one.get<std::string>(); });
    return json;
}

/// What an installed Windows keeps of the first link, and of each other one. "GUID" stands for the link's own, and
/// "KEY" for its class subkey.
class Installed
{
public:
    Installed()
    {
        const Json kinds = Json::parse(ReadFileBytes(BesideProgram(L"golden/e2e/installed.json")));
        for (const Link& link : Links())
        {
            const Json& keys = kinds[m_links.empty() ? 0 : 1];
            const std::wstring device = L"PCI\\" + Seeded::Enum(link);
            m_links.emplace_back(link, StringData(device), StringData(device));
            for (const auto& [path, values] : keys.items())
            {
                std::wstring own = std::regex_replace(Wide(path), std::wregex(L"GUID"), link.sGuid.c_str());
                own = std::regex_replace(own, std::wregex(L"KEY"), Seeded::Enum(link));
                const auto& key = m_keys.emplace_back(L"SYSTEM\\CurrentControlSet\\" + own);
                for (const auto& [name, value] : values.items())
                    key.Set(L"", Wide(name), DataOf(value));
            }
        }
    }

private:
    std::deque<Seeded> m_links;
    std::deque<RegistryKeyScope> m_keys;
};

TEST(Machine, IsWhatTheLibraryAnswers)
{
    const bool vista = Facts()["vista"];
    const Installed installed;
    std::vector<TOLVA::NIC_INFO> list;
    ASSERT_TRUE(TOLVA::GetAdapterList(list));
    EXPECT_EQ(3U, list.size());
    const zelk::Machine machine = zelk::ReadMachine();
    EXPECT_TRUE(machine.problems.empty());
    EXPECT_EQ(3, std::ranges::count(machine.adapters, false, &zelk::Adapter::hidden));
    for (const TOLVA::NIC_INFO& nic : list)
    {
        const auto found =
            std::ranges::find(machine.adapters, zelk::Guid::Parse(Shown(nic.sNicGuid)), &zelk::Adapter::guid);
        ASSERT_NE(machine.adapters.end(), found);
        EXPECT_TRUE(found->problems.empty());
        const Json told = Told(*found, vista);
        for (const auto& [place, answer] : AnswersOf(nic, vista))
            EXPECT_EQ(answer, told.at(Json::json_pointer(place))) << place;
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
        EXPECT_EQ(Shown(answer), name);
    }
}

} // namespace
