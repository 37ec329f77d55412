#include "backends_test.h"

using namespace std::string_literals;
using testing_support::StringData;

namespace
{

class Vista : public BackendTest
{
protected:
    Vista() { Asked(); }

    VistaAPI api;
};

const std::string SET_GATEWAY = "[E] VistaAPI::SetDefaultGateway : ... ending( ";
const std::string INDEX_FAILED = "[E] TOLVA::GetAdapterIndex : ... ending(GetAdapterIndex failed) : dwRc = 55\n";

TEST_F(BackendTest, NewerFunctionsAreLookedUpOnce)
{
    const VistaAPI complete;
    EXPECT_EQ("load IPHLPAPI.DLL; ConvertInterfaceIndexToLuid; CreateUnicastIpAddressEntry; CreateIpForwardEntry2; "
              "DeleteIpForwardEntry2; DeleteUnicastIpAddressEntry; FreeMibTable; GetIpForwardTable2; "
              "GetUnicastIpAddressTable; InitializeUnicastIpAddressEntry; GetTcp6Table; ",
              Asked());
    for (const auto& [sName, pFunction] : exports)
        missing.insert(sName);
    const VistaAPI exportless;
    trace.ExpectLines({});
    missing.insert("IPHLPAPI.DLL");
    const VistaAPI unloadable;
    trace.ExpectLines({"[E] VistaAPI::VistaAPI : LoadLibrary('IPHLPAPI.DLL') failed : dwLastError = 126"});
}

TEST_F(Vista, WhatFailsSaysWhichCallFailed)
{
    const struct
    {
        std::string sOperation;
        const char* pszFunction; ///< fails, then is missing, then all are
        bool bFirst;             ///< the operation's first call into the platform
    } rows[] = {
        {"GetAdapterRoutes", "GetIpForwardTable2", true},
        {"AddAdapterRoute", "ConvertInterfaceIndexToLuid", true},
        {"AddAdapterRoute", "CreateIpForwardEntry2", false},
        {"GetAdaptersIpAddrs", "GetUnicastIpAddressTable", true},
        {"SetDefaultGateway", "GetIpForwardTable2", true},
        {"SetDefaultGateway", "CreateIpForwardEntry2", false},
        {"SetDefaultGateway", "ConvertInterfaceIndexToLuid", false},
    };
    for (const auto& row : rows)
    {
        const std::string sLine =
            "[E] VistaAPI::" + row.sOperation + " : ... ending( VistaAPI::" + row.pszFunction + " failed ) : dwRc = ";
        SCOPED_TRACE(sLine);
        codes[row.pszFunction] = {50};
        EXPECT_FALSE(Run(api, row.sOperation));
        EXPECT_EQ(sLine + "50\n", trace.Complaints());
        for (const char* pszMissing : {row.pszFunction, "IPHLPAPI.DLL"})
        {
            missing = {pszMissing};
            VistaAPI lacking;
            missing.clear();
            trace.Empty();
            EXPECT_FALSE(Run(lacking, row.sOperation));
            EXPECT_EQ(pszMissing == row.pszFunction || row.bFirst, trace.Complaints() == sLine + "1\n");
        }
    }
    for (const auto& [sOperation, sText] : {std::pair<std::string, std::string>("GetAdapterRoutes", ""),
                                            {"GetAdaptersIpAddrs", "TOLVA::"},
                                            {"SetDefaultGateway", "TOLVA::"}})
    {
        indexNames.clear();
        indexCodes = {55};
        Asked();
        EXPECT_FALSE(Run(api, sOperation));
        EXPECT_EQ(INDEX_FAILED + "[E] VistaAPI::" + sOperation + " : ... ending( " + sText +
                      "GetAdapterIndex failed )\n",
                  trace.Complaints());
        EXPECT_EQ("", Asked());
    }
}

TEST_F(Vista, RoutesOfTheAdapter)
{
    routes = {NewRow(12, "10.1.0.0", 16, "10.0.0.1", 1), NewRow(11, "10.2.0.0", 15, "10.0.0.1", 4000000000),
              NewRow(11, "fd00::", 64, "fe80::1", 300)};
    std::vector<TOLVA::ROUTE_INFO> list = {Route("1.1.1.1", 32, "0.0.0.0", 9)};
    EXPECT_TRUE(api.GetAdapterRoutes(Adapter(), list));
    EXPECT_EQ("1.1.1.1/32 via 0.0.0.0 if 11 metric 9; 10.2.0.0/15 via 10.0.0.1 if 11 metric 4000000000; "
              "fd00::/64 via fe80::1 if 11 metric 300; ",
              Shown(list));
    EXPECT_EQ("table 0; free; ", Asked());
    const auto SaidOf = [](const std::string& sIndex, const std::string& sMetric) {
        std::string sLines;
        for (const std::string& sValue :
             {"InterfaceIndex = " + sIndex, "ValidLifetime = 100"s, "PreferredLifetime = 200"s, "Metric = " + sMetric,
              "Protocol = 32"s, "Age = 33"s, "Origin = 2"s})
            sLines += "[V] VistaAPI::GetAdapterRoutes : pIpForwardTable2->Table[i]." + sValue + '\n';
        return sLines;
    };
    EXPECT_EQ(Transcript("[V] VistaAPI::GetAdapterRoutes : starting ...\n" + SaidOf("12", "1") +
                         SaidOf("11", "4000000000") + SaidOf("11", "300") +
                         "[V] VistaAPI::GetAdapterRoutes : ... ending"),
              trace.LinesOf("VistaAPI::GetAdapterRoutes"));
}

// Numbers of rows that the library made from nothing, and from a deleted route.
const std::string MADE = ": 11000 0 -1 -1 3 0 0 1 1 0 0; ";
const std::string REUSED = ": 500 31 100 200 3 1 0 1 1 0 0; ";

TEST_F(Vista, AddedRoutes)
{
    const std::string V4 = "create 10.0.0.0/8 via 10.0.0.1 if 11 metric ";
    const std::string NAME = " VistaAPI::AddAdapterRoute : ";
    const std::string METRIC = "[V]" + NAME + "forwardRow2.Metric = ";
    const std::string END = "[V]" + NAME + "... ending";
    indexCodes = {55}; // the index is the record's own
    const auto Add = [&](const char* pszDestination, bool bExists, DWORD dwLowest, const std::string& sCalls,
                         const std::string& sLines, const std::string& sEnd) {
        SCOPED_TRACE(sCalls);
        routes.assign(bExists ? 1 : 0, NewRow(11, "10.0.0.0", 8, "10.0.0.1", 4));
        dwLowestMetric = dwLowest;
        trace.Empty();
        EXPECT_EQ(sEnd == END, api.AddAdapterRoute(Adapter(L"{ANY}"), Route(pszDestination, 8, "10.0.0.1", 4)));
        EXPECT_EQ("luid 11; " + sCalls, Asked());
        EXPECT_EQ(Transcript("[V]" + NAME + "starting ...\n" + sLines + sEnd),
                  trace.LinesOf("VistaAPI::AddAdapterRoute"));
    };
    Add("10.0.0.0", false, 0, V4 + "4" + MADE, "", END);
    Add("fd00::", false, 0, "create fd00::/8 via 10.0.0.1 if 11 metric 4" + MADE, "", END);
    Add("10.0.0.0", true, 0, V4 + "4" + MADE, "[I]" + NAME + "Route already exists\n", END);
    Add("10.0.0.0", false, 9, Series(V4, 4, 9, MADE), Series(METRIC, 4, 8, "\n"), END);
    Add("10.0.0.0", true, 5, Series(V4, 4, 5, MADE), METRIC + "4\n",
        "[E]" + NAME + "... ending( VistaAPI::CreateIpForwardEntry2 failed ) : dwRc = 5010");
}

TEST_F(Vista, DefaultGateways)
{
    const auto first = NewRow(11, "0.0.0.0", 0, "10.0.0.2", 7);
    const auto second = NewRow(11, "10.0.0.0", 0, "10.0.0.3", 8); // the prefix length decides
    const auto v6 = NewRow(11, "::", 0, "fe80::1", 9);
    const std::string DELETE1 = "delete 0.0.0.0/0 via 10.0.0.2 if 11; ";
    const std::string DELETE2 = "delete 10.0.0.0/0 via 10.0.0.3 if 11; ";
    const std::string NEW4 = "create 0.0.0.0/0 via 10.0.0.9 if 11 metric ";
    const std::string NEW6 = "create ::/0 via fe80::9 if 11 metric ";
    const std::string REFUSED = SET_GATEWAY + "VistaAPI::DeleteIpForwardEntry2 failed ) : dwRc = ";
    const auto Set = [&](const char* pszGateway, std::vector<MIB_IPFORWARD_ROW2> rows, const Codes& forced,
                         const std::string& sCalls, const std::string& sComplaints = {}) {
        SCOPED_TRACE(sCalls);
        routes = std::move(rows);
        // None of these is touched.
        routes.insert(routes.begin() + 1, {NewRow(12, "0.0.0.0", 0, "10.0.0.1", 1), NewRow(12, "::", 0, "fe80::2", 1),
                                           NewRow(11, "0.0.0.0", 1, "10.0.0.4", 1)});
        codes = forced;
        trace.Empty();
        EXPECT_EQ(sComplaints.empty(), api.SetDefaultGateway(Adapter(), Ip(pszGateway)));
        EXPECT_EQ(sCalls, Asked());
        EXPECT_EQ(sCalls.find("luid") != std::string::npos,
                  trace.Has("[V] VistaAPI::SetDefaultGateway : No default gateway found, creating new entry"));
        for (int metric = 0; metric <= 4; ++metric)
            EXPECT_EQ(sCalls.ends_with("metric 5" + MADE),
                      trace.Has(Joined("[V] VistaAPI::SetDefaultGateway : forwardRow2.Metric = ", metric)));
        EXPECT_EQ(sComplaints, trace.Complaints());
    };
    Set("10.0.0.9", {first, v6, second}, {}, "table 2; " + DELETE1 + DELETE2 + "free; " + NEW4 + "7" + REUSED);
    Set("fe80::9", {first, v6}, {}, "table 23; delete ::/0 via fe80::1 if 11; free; " + NEW6 + "9" + REUSED);
    Set("fe80::9", {first}, {}, "table 23; free; luid 11; " + NEW6 + "0" + MADE);
    Set("10.0.0.9", {v6}, {{"CreateIpForwardEntry2", {160, 160, 160, 160, 160}}},
        "table 2; free; luid 11; " + Series(NEW4, 0, 5, MADE));
    Set("10.0.0.9", {first, second, first}, {{"DeleteIpForwardEntry2", {5, TRUE_ANSWER, 1168}}},
        "table 2; " + DELETE1 + DELETE2 + DELETE1 + "free; ",
        REFUSED + "5\n" + REFUSED + "1168\n" + SET_GATEWAY + "Failed )\n");
    Set("10.0.0.9", {first}, {{"CreateIpForwardEntry2", {5010}}},
        "table 2; " + DELETE1 + "free; " + NEW4 + "7" + REUSED,
        SET_GATEWAY + "VistaAPI::CreateIpForwardEntry2 failed ) : dwRc = 5010\n");

    routes = {NewRow(12, "10.1.0.0", 16, "10.0.0.1", 1), first};
    EXPECT_TRUE(Run(api, "SetDefaultGateway"));
    EXPECT_EQ(Transcript(R"(
[V] VistaAPI::SetDefaultGateway : starting ...
[V] VistaAPI::SetDefaultGateway : pIpForwardTable2->Table[i].DestinationPrefix.PrefixLength = 16
[V] VistaAPI::SetDefaultGateway : sDestinationPrefix = "10.1.0.0"
[V] VistaAPI::SetDefaultGateway : sNextHop = "10.0.0.1"
[V] VistaAPI::SetDefaultGateway : pIpForwardTable2->Table[i].DestinationPrefix.PrefixLength = 0
[V] VistaAPI::SetDefaultGateway : sDestinationPrefix = "0.0.0.0"
[V] VistaAPI::SetDefaultGateway : sNextHop = "10.0.0.2"
[I] VistaAPI::SetDefaultGateway : Delete : sNextHop = "10.0.0.2"
[V] VistaAPI::SetDefaultGateway : ... ending
)"),
              trace.LinesOf("VistaAPI::SetDefaultGateway"));
}

MIB_UNICASTIPADDRESS_ROW UnicastRow(DWORD dwIndex, const char* pszAddress, int prefixOrigin, int suffixOrigin)
{
    MIB_UNICASTIPADDRESS_ROW row = {};
    row.Address = Ip(pszAddress).sockaddr();
    row.InterfaceIndex = dwIndex;
    row.PrefixOrigin = static_cast<NL_PREFIX_ORIGIN>(prefixOrigin);
    row.SuffixOrigin = static_cast<NL_SUFFIX_ORIGIN>(suffixOrigin);
    row.OnLinkPrefixLength = 64;
    row.DadState = IpDadStateDeprecated;
    row.ScopeId.Value = 0x20000003;
    return row;
}

TEST_F(Vista, AddressesOfTheAdapter)
{
    unicast = {UnicastRow(12, "10.0.0.1", 1, 1), UnicastRow(11, "none", 1, 1), UnicastRow(11, "fe80::7", 2, 4)};
    std::vector<TOLVA::ASSOC_IP_ADDR> list(1);
    EXPECT_TRUE(api.GetAdaptersIpAddrs(Adapter(), list));
    EXPECT_EQ("<invalid>/0 if 0 manual dad 0 scope 0; fe80::7/64 if 11 automatic dad 3 scope 536870915; ", Shown(list));
    EXPECT_EQ("table 0; free; ", Asked());
    EXPECT_EQ(Transcript(R"(
[V] VistaAPI::GetAdaptersIpAddrs : starting ...
[V] VistaAPI::GetAdaptersIpAddrs : sAddress = "<invalid>"
[V] VistaAPI::GetAdaptersIpAddrs : sAddress = "fe80::7"
[V] VistaAPI::GetAdaptersIpAddrs : AssocIpAddr.bAutomatic = true
[V] VistaAPI::GetAdaptersIpAddrs : AssocIpAddr.SubnetPrefix = 64
[V] VistaAPI::GetAdaptersIpAddrs : The scope level is Link-Local
[V] VistaAPI::GetAdaptersIpAddrs : AssocIpAddr.ScopeId.Zone = 3
[V] VistaAPI::GetAdaptersIpAddrs : AssocIpAddr.ScopeId.Level = 2
[V] VistaAPI::GetAdaptersIpAddrs : The IP address has been deprecated
[V] VistaAPI::GetAdaptersIpAddrs : Prefix Origin : Well Known
[V] VistaAPI::GetAdaptersIpAddrs : Suffix Origin : Link Layer Address
[V] VistaAPI::GetAdaptersIpAddrs : AssocIpAddr.ulIndex = 11
[V] VistaAPI::GetAdaptersIpAddrs : ... ending
)"),
              trace.LinesOf("VistaAPI::GetAdaptersIpAddrs"));
    EXPECT_TRUE(trace.Has("[V] TOLVA::Convert_SOCKADDR_INET : sIpAddr = \"fe80::7\""));
    EXPECT_FALSE(trace.Has("[V] TOLVA::Convert_SOCKADDR_INET : sIpAddr = \"0.0.0.0\"")) << "of another family";
}

TEST_F(Vista, OnlyAnAddressOfManualOriginsIsManual)
{
    for (const auto& [prefix, suffix] : {std::pair(1, 1), {1, 3}, {3, 1}, {3, 3}})
        unicast.push_back(UnicastRow(11, "10.0.0.2", prefix, suffix));
    std::vector<TOLVA::ASSOC_IP_ADDR> list;
    EXPECT_TRUE(api.GetAdaptersIpAddrs(Adapter(), list));
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(i != 0, list.at(i).bAutomatic) << i;
}

TEST_F(Vista, EveryPropertyOfAnAddressIsSaidInWords)
{
    using Words = std::map<int, std::string>;
    const Words levels = {{1, "Interface-Local"}, {2, "Link-Local"},         {3, "Subnet"}, {4, "Admin-Local"},
                          {5, "Site-Local"},      {8, "Organization-Local"}, {14, "Global"}};
    const Words states = {{0, "The DAD state is invalid"},
                          {1, "The DAD state is tentative"},
                          {2, "A duplicate IP address has been detected"},
                          {3, "The IP address has been deprecated"},
                          {4, "The IP address is the preferred address"}};
    const Words prefixes = {
        {0, "Other"}, {1, "Manual"}, {2, "Well Known"}, {3, "DHCP"}, {4, "Router Advertisement"}, {16, "Unchanged"}};
    const Words suffixes = {{0, "Other"},  {1, "Manual"},    {2, "Well Known"}, {3, "DHCP"}, {4, "Link Layer Address"},
                            {5, "Random"}, {16, "Unchanged"}};
    for (int i = 0; i < 18; ++i)
    {
        const int iLevel = i % 16, iState = i % 8; // as many as the platform's types can hold
        unicast = {UnicastRow(11, "10.0.0.2", i, i)};
        unicast[0].ScopeId.Level = static_cast<ULONG>(iLevel) & 0xF;
        unicast[0].DadState = static_cast<NL_DAD_STATE>(iState);
        trace.Empty();
        EXPECT_TRUE(Run(api, "GetAdaptersIpAddrs"));
        const auto Said = [&](const Words& words, int value, const std::string& sBefore, const std::string& sUnknown) {
            const auto word = words.find(value);
            EXPECT_TRUE(trace.Has(word != words.end() ? "[V] VistaAPI::GetAdaptersIpAddrs : " + sBefore + word->second
                                                      : Joined(sUnknown.substr(0, 4), "VistaAPI::GetAdaptersIpAddrs : ",
                                                               sUnknown.substr(4), " = ", value)))
                << i << ' ' << sUnknown;
        };
        Said(levels, iLevel, "The scope level is ", "[V] The scope level is <reserved> : AssocIpAddr.ScopeId.Level");
        Said(states, iState, "", "[W] The DAD state is unknown : AssocIpAddr.enDadState");
        Said(prefixes, i, "Prefix Origin : ", "[W] Prefix Origin : Unknown : pipTable->Table[ i ].PrefixOrigin");
        Said(suffixes, i, "Suffix Origin : ", "[W] Suffix Origin : Unknown : pipTable->Table[ i ].SuffixOrigin");
    }
}

TEST_F(Vista, Tcp6TableIsThePlatforms)
{
    MIB_TCP6TABLE table;
    ULONG ulSize = 5;
    codes["GetTcp6Table"] = {122, 0};
    EXPECT_EQ(122U, api.GetTcp6Table(&table, &ulSize, true));
    EXPECT_EQ(77U, ulSize);
    EXPECT_EQ(0U, api.GetTcp6Table(nullptr, &ulSize, false));
    EXPECT_EQ("tcp6 1 5 1; tcp6 0 77 0; ", Asked());
    missing = {"GetTcp6Table"};
    VistaAPI lacking;
    EXPECT_EQ(1U, lacking.GetTcp6Table(&table, &ulSize, true));
    EXPECT_EQ(1U, PreVistaAPI().GetTcp6Table(&table, &ulSize, true));
    EXPECT_EQ(77U, ulSize);
}

TEST_F(Vista, AddressesAreChangedByTheCommand)
{
    Seed(CONNECTION_KEY, L"Name", StringData(L"LAN"));
    intptr_t iExitCode = 0;
    // Instead of the command interpreter; only the arguments that come first matter to it.
    patches.Add<intptr_t (*)(int, const wchar_t*)>("_wspawnlp", [&](int, const wchar_t*) { return iExitCode; });
    for (const auto& [sOperation, sDriver] :
         {std::pair<std::string, std::string>("AddIpAddr", "AddIpAddr"), {"DeleteIpAddr", "RemoveIpAddr"}})
        for (const bool bDone : {true, false})
        {
            iExitCode = bDone ? 0 : 1;
            trace.Empty();
            EXPECT_EQ(bDone, Run(api, sOperation));
            EXPECT_TRUE(trace.Has("[I] Wrap_netsh::" + sDriver + " : sIpAddress = \"10.0.0.5\""));
            EXPECT_EQ("[V] VistaAPI::" + sOperation + " : ... ending : bRc = " + (bDone ? "true" : "false"),
                      trace.Lines().back());
        }
}

TEST_F(Vista, WhatNoOperationAccepts)
{
    PreVistaAPI preVista;
    for (const auto& [pApi, sClass] :
         {std::pair<AbstractNetworkAPI*, std::string>(&preVista, "PreVistaAPI::"), {&api, "VistaAPI::"}})
    {
        for (const std::string sOperation : {"GetAdapterRoutes", "AddAdapterRoute", "GetAdaptersIpAddrs",
                                             "SetDefaultGateway", "AddIpAddr", "DeleteIpAddr"})
        {
            trace.Empty();
            EXPECT_FALSE(Run(*pApi, sOperation, Adapter(L"")));
            trace.ExpectLines({"[V] " + sClass + sOperation + " : starting ...",
                               "[E] " + sClass + sOperation + " : ... ending( Bad NIC GUID )"});
        }
        trace.Empty();
        EXPECT_FALSE(pApi->SetDefaultGateway(Adapter(), Ip("none")));
        EXPECT_EQ("[E] " + sClass + "SetDefaultGateway : ... ending( Invalid gateway address )\n", trace.Complaints());
    }
    EXPECT_FALSE(api.AddIpAddr(Adapter(), Address("none")));
    EXPECT_FALSE(api.DeleteIpAddr(Adapter(), Address("none")));
    EXPECT_EQ("[E] VistaAPI::AddIpAddr : ... ending( Bad IpAddr )\n"
              "[E] VistaAPI::DeleteIpAddr : ... ending( Bad IpAddr )\n",
              trace.Complaints());
    EXPECT_EQ("", Asked());
    EXPECT_TRUE(indexNames.empty());
}

} // namespace
