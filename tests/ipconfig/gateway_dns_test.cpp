#include <tuple>

#include "ipconfig_test.h"

using namespace testing_support;

namespace
{

const RegistryData MARK = DwordData(77);
const RegistryData NO_LIST = ListData({});
const RegistryData NO_TEXT = {REG_SZ, {0, 0}};

class Registered : public IpconfigTest
{
protected:
    /// Runs an operation on keys in which a mark shows what was written, of which the nth write fails.
    void TellStored(const std::string& sTitle, int iFail, const std::function<bool()>& run)
    {
        for (const wchar_t* pszName : {L"DefaultGateway", L"NameServer"})
            for (const bool bIpv6 : {false, true})
                Store(bIpv6, pszName, MARK);
        iFailWrite = iFail;
        const auto runIt = [&] {
            const bool bRc = run();
            return Show(bRc, "gateways", Stored(L"DefaultGateway"), "servers", Stored(L"NameServer"));
        };
        Tell(Show(sTitle, "failing write:", iFail), runIt);
    }
};

TEST_F(Registered, GatewaysAreTheAdaptersDefaultRoutes)
{
    std::vector<velmor::ip_address> list;
    const auto Get = [&](const std::string& sTitle, TOLVA::FAMILY_TYPE enFamily) {
        Tell(sTitle, [&] { return Show(TOLVA::GetDefaultGatewayList(NicInfo, enFamily, list), list); });
    };
    for (const auto enFamily : FAMILIES)
        Get(Show("family", enFamily), enFamily);
    codes["GetAdapterIndex"] = {5};
    Get("without an index", TOLVA::FAMILY_BOTH);
    FailTables(5);
    Get("without a table", TOLVA::FAMILY_BOTH);
}

TEST_F(Registered, AGatewayIsSet)
{
    refused = {"10.0.0.8"};
    for (const auto& [sGateway, iFail] : {std::pair<std::string, int>("10.0.0.9", 0),
                                          {"fe80::9", 0},
                                          {"10.0.0.8", 0},
                                          {"none", 0},
                                          {"10.0.0.9", 1},
                                          {"fe80::9", 1}})
        InNewProcess(Show(sGateway, iFail), [&, &sName = sGateway, iWrite = iFail] {
            TheTrace.SetTraceLevel(4);
            TellStored(sName, iWrite, [&] { return TOLVA::SetDefaultGateway(NicInfo, Ip(sName)); });
        });
    RemoveKey(false);
    EXPECT_TRUE(TOLVA::SetDefaultGateway(NicInfo, Ip("10.0.0.9")));
    golden->Line("a missing key is made:", Stored(L"DefaultGateway"));
}

TEST_F(Registered, WhatIsAutomatic)
{
    // The list that is written for an IPv6 gateway is no single text.
    const RegistryData DATA[] = {
        MISSING, NO_TEXT, NO_LIST, MARK, {REG_SZ, {}}, StringData(L"10.0.0.1"), ListData({L"10.0.0.1"})};
    const auto Ask = [&](const std::string& sTitle) {
        for (const auto enFamily : FAMILIES)
        {
            bool bGateway = false, bDns = false;
            Tell(Show(sTitle, "family", enFamily), [&] {
                const bool bRc = TOLVA::IsGatewayAutomatic(NicInfo, enFamily, bGateway);
                return Show(bRc && TOLVA::IsDnsAutomatic(NicInfo, enFamily, bDns), bGateway, "DNS", bDns);
            });
        }
    };
    for (const RegistryData& data4 : DATA)
        for (const RegistryData& data6 : DATA)
        {
            for (const wchar_t* pszName : {L"DefaultGateway", L"NameServer"})
            {
                Store(false, pszName, data4);
                Store(true, pszName, data6);
            }
            if (&data4 == &data6 || data4 == MISSING || data6 == MISSING)
                Ask(Show(data4, "and", data6));
        }
    RemoveKey(false);
    RemoveKey(true);
    Ask("without keys");
    bool bAutomatic = true;
    Tell("gateway of no family", [&] { return TOLVA::IsGatewayAutomatic(NicInfo, UNKNOWN_FAMILY, bAutomatic); });
}

TEST_F(Registered, BothReturnToDhcp)
{
    for (const auto enFamily : FAMILIES)
        for (const int iFail : {0, 1, 2})
        {
            TellStored(Show("gateway", enFamily), iFail, [&] { return TOLVA::ReturnGatewayToDhcp(NicInfo, enFamily); });
            TellStored(Show("DNS", enFamily), iFail, [&] { return TOLVA::ReturnDnsToDhcp(NicInfo, enFamily); });
        }
}

TEST_F(Registered, AListOfServersIsSet)
{
    TheTrace.SetTraceLevel(4);
    refused = {"10.0.0.9"};
    for (const auto& [sList, iFail] : {std::pair<std::string, int>("", 0),
                                       {"10.0.0.2 10.0.0.1", 0},
                                       {"fe80::1", 1},
                                       {"fe80::1", 2},
                                       {"10.0.0.9", 0},
                                       {"fe80::1 10.0.0.2 fe80::2 none 10.0.0.1", 0}})
    {
        std::vector<velmor::ip_address> list;
        for (const std::string& sServer : Words(sList))
            list.push_back(Ip(sServer));
        TellStored(Show("servers", sList), iFail, [&] { return TOLVA::SetDnsServerList(NicInfo, list); });
    }
}

} // namespace
