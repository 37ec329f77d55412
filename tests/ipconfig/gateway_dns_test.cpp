#include "ipconfig_test.h"

using namespace testing_support;

namespace
{

class Registered : public IpconfigTest
{
protected:
    /// Puts values into both keys by which is seen what was written.
    void Mark()
    {
        for (const wchar_t* pszName : {L"DefaultGateway", L"NameServer"})
            for (const bool bIpv6 : {false, true})
                Store(bIpv6, pszName, MARK);
        Asked();
    }
    void ExpectStored(const wchar_t* pszName, const RegistryData& data4, const RegistryData& data6) const
    {
        EXPECT_EQ(data4, Stored(false, pszName));
        EXPECT_EQ(data6, Stored(true, pszName));
    }

    const RegistryData MARK = DwordData(77);
    const RegistryData NO_LIST = {REG_MULTI_SZ, {0, 0}};
    const RegistryData NO_TEXT = {REG_SZ, {0, 0}};
};
using Gateways = Registered;
using Dns = Registered;

TEST_F(Gateways, AreTheAdaptersDefaultRoutes)
{
    const std::string NAME = "TOLVA::GetDefaultGatewayList";
    const std::string GATEWAYS = "[I] Added : sNextHop = \"10.0.0.1\"; [I] Added : sNextHop = \"10.0.0.4\"; " +
                                 On("[I] Added : sNextHop = \"fe80::1\"; ", "") + "[V] ... ending";
    std::vector<velmor::ip_address> list, expected;
    for (const auto enFamily : {TOLVA::FAMILY_BOTH, TOLVA::FAMILY_IPV4, TOLVA::FAMILY_IPV6})
    {
        Asked();
        EXPECT_TRUE(TOLVA::GetDefaultGatewayList(NicInfo, enFamily, list));
        expected.insert(expected.end(), {Ip("10.0.0.1"), Ip("10.0.0.4"), Ip("fe80::1")});
        expected.resize(expected.size() - (VISTA ? 0 : 1));
        EXPECT_EQ(expected, list);
        EXPECT_EQ(GATEWAYS, Said(NAME));
    }
    Asked();
    indexCodes.assign(indexNames.size() + 1, 5);
    EXPECT_FALSE(TOLVA::GetDefaultGatewayList(NicInfo, TOLVA::FAMILY_BOTH, list));
    EXPECT_EQ("[E] ... ending( TOLVA::GetAdapterIndex failed )", Said(NAME));
    EXPECT_EQ(expected, list);
    Asked();
    dwTableRc = 5;
    EXPECT_EQ(!VISTA, TOLVA::GetDefaultGatewayList(NicInfo, TOLVA::FAMILY_BOTH, list)) << "read before, when older";
    EXPECT_EQ(On("[E] ... ending( GetAdapterRoutes failed )", GATEWAYS), Said(NAME));
}

TEST_F(Gateways, OneIsSet)
{
    // Vista goes by the prefix and the family, older systems by the destination; they know no IPv6.
    const std::string ROUTES4 = On("not via 10.0.0.1; not via 10.0.0.4; via 10.0.0.", "not via 10.0.0.1; via 10.0.0.");
    const std::string ROUTES6 = On("not via fe80::1; via fe80::9", "not via 10.0.0.1; via 255.255.255.255");
    const std::string REFUSED = "[E] ... ending( SetDefaultGateway failed )";
    const std::string NOT_WRITTEN = "[E] ... ending( Set 'DefaultGateway' failed ) "; // with its last blank
    const std::tuple<std::wstring, int, std::string, std::string> rows[] = {
        {L"10.0.0.9", 0, ROUTES4 + "9", "[V] ... ending"}, {L"fe80::9", 0, ROUTES6, "[V] ... ending"},
        {L"10.0.0.8", 0, ROUTES4 + "8", REFUSED},          {L"none", 0, "", REFUSED},
        {L"10.0.0.9", 1, ROUTES4 + "9", NOT_WRITTEN},      {L"fe80::9", 1, ROUTES6, NOT_WRITTEN}};
    refused = {"10.0.0.8"};
    for (const auto& [sGateway, iFail, sAsked, sEnd] : rows)
    {
        SCOPED_TRACE(sAsked + sEnd);
        Mark();
        iFailWrite = iFail;
        const velmor::ip_address gateway(velmor::string(sGateway.c_str()));
        const bool bWritten = sEnd[1] == 'V';
        EXPECT_EQ(bWritten, TOLVA::SetDefaultGateway(NicInfo, gateway));
        ExpectStored(L"DefaultGateway", bWritten && gateway.is_ipv4() ? ListData(sGateway) : MARK,
                     bWritten && gateway.is_ipv6() ? ListData(sGateway) : MARK);
        EXPECT_EQ(sEnd, Said("TOLVA::SetDefaultGateway"));
        const std::string sKey = gateway.is_ipv6() ? "sTcpi6pKey = \"CurrentControlSet\\services\\Tcpip6"
                                                   : "sTcpi4pKey = \"CurrentControlSet\\services\\Tcpip";
        EXPECT_EQ(sEnd != REFUSED, trace.Has(Transcript("[V] TOLVA::SetDefaultGateway : " + sKey +
                                                        "\\Parameters\\Interfaces\\<guid>\"")[0]));
        EXPECT_EQ(sAsked, Asked());
    }
    RemoveKey(false);
    EXPECT_TRUE(TOLVA::SetDefaultGateway(NicInfo, Ip("10.0.0.9")));
    EXPECT_EQ(ListData(L"10.0.0.9"), Stored(false, L"DefaultGateway")) << "a missing key is made";
}

TEST_F(Registered, WhatIsAutomatic)
{
    using Rows = std::vector<std::pair<RegistryData, bool>>;
    // The list that is written for an IPv6 gateway is no single text.
    const Rows texts = {{MISSING, true},      {NO_TEXT, true},
                        {MARK, true},         {ListData(L"fe80::1"), true},
                        {{REG_SZ, {}}, true}, {StringData(L"fe80::1"), false}};
    const Rows lists = {
        {MISSING, true}, {NO_LIST, true}, {StringData(L"10.0.0.1"), true}, {ListData(L"10.0.0.1"), false}};
    using Ask = bool (*)(const TOLVA::NIC_INFO&, TOLVA::FAMILY_TYPE, bool&);
    const std::tuple<std::string, const wchar_t*, Ask, Rows> operations[] = {
        {"TOLVA::IsGatewayAutomatic", L"DefaultGateway", &TOLVA::IsGatewayAutomatic, lists},
        {"TOLVA::IsDnsAutomatic", L"NameServer", &TOLVA::IsDnsAutomatic, texts}};
    bool bAutomatic = false;
    for (const auto& [sOperation, pszName, ask, rows4] : operations)
    {
        for (const auto& [data4, bIpv4] : rows4)
            for (const auto& [data6, bIpv6] : texts)
            {
                SCOPED_TRACE(sOperation + testing::PrintToString(data4.bytes) + testing::PrintToString(data6.bytes));
                Store(false, pszName, data4);
                Store(true, pszName, data6);
                for (const auto& [enFamily, bExpected] : {std::pair(TOLVA::FAMILY_IPV4, bIpv4),
                                                          {TOLVA::FAMILY_IPV6, bIpv6},
                                                          {TOLVA::FAMILY_BOTH, bIpv4 && bIpv6}})
                {
                    Asked();
                    bAutomatic = !bExpected;
                    EXPECT_TRUE(ask(NicInfo, enFamily, bAutomatic));
                    EXPECT_EQ(bExpected, bAutomatic) << enFamily;
                    EXPECT_EQ("[V] ... ending", Said(sOperation));
                    EXPECT_TRUE(trace.Has("[V] " + sOperation + " : bIsAutomatic = " + (bExpected ? "true" : "false")));
                }
            }
        RemoveKey(false);
        RemoveKey(true);
        EXPECT_TRUE(ask(NicInfo, TOLVA::FAMILY_BOTH, bAutomatic = false) && bAutomatic) << "without keys";
    }
    EXPECT_TRUE(TOLVA::IsDnsAutomatic(NicInfo, UNKNOWN_FAMILY, bAutomatic) && !bAutomatic);
}

TEST_F(Registered, BothReturnToDhcp)
{
    const auto IPV4 = TOLVA::FAMILY_IPV4, IPV6 = TOLVA::FAMILY_IPV6, BOTH = TOLVA::FAMILY_BOTH;
    const std::tuple<bool, TOLVA::FAMILY_TYPE, int, RegistryData, RegistryData> rows[] = {
        {false, IPV4, 0, NO_LIST, MARK},    {false, IPV6, 0, NO_LIST, NO_LIST}, // that of IPv4 too
        {false, BOTH, 0, NO_LIST, NO_LIST}, {false, BOTH, 1, MARK, MARK},       {false, IPV6, 2, NO_LIST, MARK},
        {true, IPV4, 0, NO_TEXT, MARK},     {true, IPV6, 0, MARK, NO_TEXT},     {true, BOTH, 0, NO_TEXT, NO_TEXT},
        {true, BOTH, 1, MARK, MARK},        {true, BOTH, 2, NO_TEXT, MARK}};
    for (const auto& [bDns, enFamily, iFail, data4, data6] : rows)
    {
        SCOPED_TRACE(std::to_string(bDns) + std::to_string(enFamily) + std::to_string(iFail));
        Mark();
        iFailWrite = iFail;
        EXPECT_EQ(iFail == 0, (bDns ? &TOLVA::ReturnDnsToDhcp : &TOLVA::ReturnGatewayToDhcp)(NicInfo, enFamily));
        EXPECT_EQ(iFail == 0 ? "[V] ... ending"
                  : bDns     ? "[E] ... ending( Set 'NameServer' failed  )"
                             : "[E] ... ending( Set 'DefaultGateway' failed )",
                  Said(bDns ? "TOLVA::ReturnDnsToDhcp" : "TOLVA::ReturnGatewayToDhcp"));
        ExpectStored(bDns ? L"NameServer" : L"DefaultGateway", data4, data6);
        ExpectStored(bDns ? L"DefaultGateway" : L"NameServer", MARK, MARK);
        EXPECT_EQ("", Asked());
    }
}

TEST_F(Dns, AListIsSet)
{
    const std::string NOT_WRITTEN = "[E] ... ending( Set 'NameServer' failed )";
    const std::string REFUSED = "[E] ... ending( netsh set dnsserver failed )";
    const std::string SET = "set dnsservers ";
    const RegistryData ALL4 = StringData(L"10.0.0.2,10.0.0.1"), ALL6 = StringData(L"fe80::1,fe80::2");
    const std::tuple<std::string, int, RegistryData, RegistryData, std::string, std::string> rows[] = {
        {"", 0, MARK, MARK, "", "[W] ... ending( No DNS server addresses )"},
        {"10.0.0.2 10.0.0.1", 0, ALL4, NO_TEXT, "ipv4 " + SET + "10.0.0.2", "[V] ... ending"},
        {"fe80::1", 1, MARK, MARK, "", NOT_WRITTEN},
        {"fe80::1", 2, NO_TEXT, MARK, "", NOT_WRITTEN},
        {"10.0.0.9", 0, StringData(L"10.0.0.9"), NO_TEXT, "ipv4 " + SET + "10.0.0.9", REFUSED},
        {"fe80::1 10.0.0.2 fe80::2 none 10.0.0.1", 0, ALL4, ALL6, "ipv6 " + SET + "fe80::1", "[V] ... ending"},
    };
    refused = {"10.0.0.9"};
    std::vector<std::string> lines;
    for (const auto& [sList, iFail, data4, data6, sAsked, sEnd] : rows)
    {
        SCOPED_TRACE(sAsked + sEnd);
        Mark();
        iFailWrite = iFail;
        std::vector<velmor::ip_address> list;
        for (const std::string& sServer : Words(sList))
            list.push_back(Ip(sServer.c_str()));
        EXPECT_EQ(sEnd[1] != 'E', TOLVA::SetDnsServerList(NicInfo, list));
        EXPECT_EQ(sEnd, Said("TOLVA::SetDnsServerList"));
        ExpectStored(L"NameServer", data4, data6);
        lines = trace.Lines();
        EXPECT_EQ(sAsked, Asked());
    }
    lines.resize(5);
    EXPECT_EQ(Transcript(R"([V] TOLVA::SetDnsServerList : starting ...
[V] TOLVA::SetDnsServerList : IPv4 : sTcpipKey = "CurrentControlSet\services\Tcpip\Parameters\Interfaces\<guid>"
[V] TOLVA::SetDnsServerList : sDnsServer4 = "10.0.0.2,10.0.0.1"
[V] TOLVA::SetDnsServerList : IPv6 : sTcpipKey = "CurrentControlSet\services\Tcpip6\Parameters\Interfaces\<guid>"
[V] TOLVA::SetDnsServerList : sDnsServer6 = "fe80::1,fe80::2")"),
              lines);
}

} // namespace
