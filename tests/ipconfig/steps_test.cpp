// Addresses, DHCP, gateways and servers, step by step as golden/ipconfig/steps.json says it.

#include <map>

#include <support/registry_json.h>

#include "ipconfig_test.h"

using namespace testing_support;
using nlohmann::json;

namespace
{

/// In the golden text: what the library answers and stores, asks of the platform and traces.
class Ipconfig : public IpconfigTest, public testing::WithParamInterface<std::string>
{
protected:
    void Take(const json& step)
    {
        Arrange(step);
        if (step.contains("tables"))
            FailTables(step["tables"]);
        for (const bool bIpv6 : {false, true})
            if (const json values = step.value(bIpv6 ? "ipv6" : "ipv4", json::object()); values.is_null())
                RemoveKey(bIpv6);
            else
                for (const auto& [sName, value] : values.items())
                    Store(bIpv6, Wide(sName).c_str(), DataOf(value));
        if (!step.contains("families"))
            Ask(step["title"], step, step.value("family", TOLVA::FAMILY_BOTH));
        for (const json& family : step.value("families", json::array()))
            Ask(Show(step["title"].get<std::string>(), "family", family.get<int>()), step, family);
    }

private:
    using Operation = std::function<std::string(const json& step, TOLVA::FAMILY_TYPE enFamily)>;

    void Ask(const std::string& sTitle, const json& step, TOLVA::FAMILY_TYPE enFamily)
    {
        Tell(sTitle, [&] {
            std::string sAnswer = m_operations.at(step["ask"])(step, enFamily);
            for (const std::string sName : step.value("stored", json::array()))
                sAnswer += ' ' + Show(sName, Stored(Wide(sName).c_str()));
            return sAnswer;
        });
    }
    /// One that takes a family and gives nothing.
    Operation OfFamily(bool (*pOperation)(const TOLVA::NIC_INFO&, TOLVA::FAMILY_TYPE))
    {
        return [=, this](const json&, TOLVA::FAMILY_TYPE enFamily) { return Show(pOperation(NicInfo, enFamily)); };
    }
    static std::vector<velmor::ip_address> List(const json& step)
    {
        std::vector<velmor::ip_address> list;
        for (const std::string& sAddress : Words(step["list"]))
            list.push_back(Ip(sAddress));
        return list;
    }
    std::string SetAddresses(const json& step)
    {
        std::vector<TOLVA::ASSOC_IP_ADDR> list;
        for (const velmor::ip_address& address : List(step))
        {
            list.emplace_back().IpAddress = address;
            list.back().SubnetPrefix = 20;
        }
        return Show(TOLVA::SetAdaptersIpAddrs(NicInfo, list));
    }
    std::string AskForDhcp(TOLVA::FAMILY_TYPE enFamily)
    {
        bool bOn = false, bOff = true;
        return Show(TOLVA::IsDhcpEnabled(NicInfo, enFamily, bOn), bOn, TOLVA::IsDhcpEnabled(NicInfo, enFamily, bOff),
                    bOff);
    }
    std::string AskForAutomatic(TOLVA::FAMILY_TYPE enFamily)
    {
        bool bGateway = false, bDns = false;
        const bool bRc = TOLVA::IsGatewayAutomatic(NicInfo, enFamily, bGateway);
        return Show(bRc && TOLVA::IsDnsAutomatic(NicInfo, enFamily, bDns), bGateway, "DNS", bDns);
    }

    std::vector<velmor::ip_address> m_gateways; ///< of all questions
    const std::map<std::string, Operation> m_operations = {
        {"SetAdaptersIpAddrs", [this](const json& step, auto) { return SetAddresses(step); }},
        {"SetDnsServerList",
         [this](const json& step, auto) { return Show(TOLVA::SetDnsServerList(NicInfo, List(step))); }},
        {"SetDefaultGateway",
         [this](const json& step, auto) { return Show(TOLVA::SetDefaultGateway(NicInfo, Ip(step["address"]))); }},
        {"GetDefaultGatewayList",
         [this](const json&, auto enFamily) {
             return Show(TOLVA::GetDefaultGatewayList(NicInfo, enFamily, m_gateways), m_gateways);
         }},
        {"IsDhcpEnabled", [this](const json&, auto enFamily) { return AskForDhcp(enFamily); }},
        {"IsAutomatic", [this](const json&, auto enFamily) { return AskForAutomatic(enFamily); }},
        {"RenewDhcp", OfFamily(&TOLVA::RenewDhcp)},
        {"ReleaseDhcp", OfFamily(&TOLVA::ReleaseDhcp)},
        {"ReturnToDhcp", OfFamily(&TOLVA::ReturnToDhcp)},
        {"ReturnGatewayToDhcp", OfFamily(&TOLVA::ReturnGatewayToDhcp)},
        {"ReturnDnsToDhcp", OfFamily(&TOLVA::ReturnDnsToDhcp)},
    };
};
INSTANTIATE_TEST_SUITE_P(, Ipconfig, testing::ValuesIn(NamesIn(StepsOf("ipconfig"))),
                         [](const auto& param) { return param.param; });

TEST_P(Ipconfig, Takes)
{
    InNewProcess("", [this] {
        const json group = StepsOf("ipconfig")[GetParam()];
        for (json step : group["steps"])
        {
            step.insert(group["each"].begin(), group["each"].end());
            Take(step);
        }
        ExpectNothingOpen();
    });
}

} // namespace
