// The verbs of the real zelkctl that change something, on a kernel and a registry that a stand-in for netsh changes.

#include "zelkctl_changes.h"

namespace
{

TEST_F(ZelkctlChanges, OrderAndEachOfTheDnsServersCount)
{
    EXPECT_EQ(0U, Plan(L"dns set lan0 192.0.2.53 192.0.2.54").dwExitCode);
    for (const wchar_t* pszServers : {L"192.0.2.54 192.0.2.53", L"192.0.2.53 192.0.2.55", L"192.0.2.53"})
    {
        const Planned planned = Plan(std::wstring(L"dns set lan0 ") + pszServers);
        EXPECT_EQ(10U, planned.dwExitCode);
        EXPECT_THAT(planned.paths, ElementsAre("ipv4.dnsServers"));
    }
    Do(L"dns set lan0 192.0.2.54 192.0.2.53", 0);
    EXPECT_THAT(Kernel(), HasSubstr("nameserver 192.0.2.54\nnameserver 192.0.2.53\n"));
}

TEST_F(ZelkctlChanges, DnsServersOfOneFamilyLeaveThoseOfTheOther)
{
    const RegistryValueScope other(std::wstring(zelk::IPV6_INTERFACES) + s_sFirst.substr(s_sFirst.rfind(L'\\') + 1),
                                   L"NameServer", StringData(L"2001:db8::53"));
    const Planned planned = Plan(L"dns set lan0 192.0.2.55");
    EXPECT_THAT(planned.paths, ElementsAre("ipv4.dnsServers"));
    EXPECT_THAT(CommandsOf(planned.result), Not(testing::Contains(HasSubstr("ipv6"))));
}

TEST_F(ZelkctlChanges, AreVerifiedAsAWhole)
{
    const StandIn idle("ZELK_IDLE", "index=2");
    const Result run = Run(L"dns set lan0 192.0.2.54 192.0.2.53 --json --timeout 2");
    EXPECT_EQ(6U, run.dwExitCode) << run.sOut;
    const Json result = Json::parse(run.sOut)["result"];
    EXPECT_EQ("notVerified", result["outcome"]);
    EXPECT_EQ("ipv4.dnsServers", result["differences"][0]["path"]);
}

TEST_F(ZelkctlChanges, WhatDhcpGaveIsNotStatic)
{
    const RegistryValueScope dhcp(s_sFirst, L"EnableDHCP", DwordData(1));
    const RegistryValueScope gateway(s_sFirst, L"DefaultGateway", StringData(std::wstring(1, L'\0'), REG_MULTI_SZ));
    const Planned address = Plan(L"address set lan0 192.0.2.10/24");
    EXPECT_EQ(10U, address.dwExitCode);
    EXPECT_THAT(address.paths, testing::Contains("ipv4.dhcp"));
    const Planned set = Plan(L"gateway set lan0 192.0.2.1");
    EXPECT_EQ(10U, set.dwExitCode);
    EXPECT_THAT(set.paths, ElementsAre("ipv4.gateways"));
    EXPECT_EQ("dhcp", set.result["items"][0]["before"]["inUse"][0]["origin"]);
    EXPECT_EQ(8U, Plan(L"address add lan0 192.0.2.11/24").dwExitCode);
}

TEST_F(ZelkctlChanges, Ipv6AddressesShowWhichOnesGoAndLeaveLinkLocalOnes)
{
    std::string sOutput;
    ASSERT_TRUE(RunUnix("ip addr replace fe80::10/64 dev lan0 nodad", sOutput)) << sOutput;
    const Planned planned = Plan(L"address set lan0 2001:db8::20/64");
    EXPECT_EQ(Json::array({"2001:db8::10/64"}), planned.result["items"][0]["before"]["configured"]);
    EXPECT_THAT(CommandsOf(planned.result), Not(testing::Contains(HasSubstr("fe80::10"))));
    Do(L"address set lan0 2001:db8::20/64 --yes", 0);
    EXPECT_THAT(Kernel(), testing::AllOf(HasSubstr("2001:db8::20/64"), HasSubstr("fe80::10/64"),
                                         HasSubstr("192.0.2.10/24"), Not(HasSubstr("2001:db8::10"))));
}

TEST_F(ZelkctlChanges, AnAddressThatStandsIsNotTouched)
{
    const std::string sKernel = Kernel();
    const Json result = Do(L"address set lan0 192.0.2.10/24 --yes", 0, {.bElevated = false});
    EXPECT_EQ(false, result["changed"]);
    EXPECT_EQ(Json::array(), result["steps"]);
    EXPECT_EQ(sKernel, Kernel());
    Do(L"address set lan0 192.0.2.10/24 192.0.2.11/24 --yes", 0); // several of IPv4
    EXPECT_THAT(Kernel(),
                testing::AllOf(HasSubstr("192.0.2.10/24\n192.0.2.11/24"), HasSubstr("default via 192.0.2.1")));
}

TEST_F(ZelkctlChanges, AddressAndGatewayAreOneCommand)
{
    const Json result = Do(L"address set lan0 198.51.100.1/25 --gateway 198.51.100.126 --dns 198.51.100.53 --yes", 0);
    EXPECT_EQ("netsh.exe interface ipv4 set address \"Connection lan0\" static 198.51.100.1 255.255.255.128 "
              "198.51.100.126",
              CommandsOf(result).at(0));
    EXPECT_THAT(Kernel(), testing::AllOf(HasSubstr("198.51.100.1/25"), HasSubstr("default via 198.51.100.126"),
                                         HasSubstr("nameserver 198.51.100.53"), Not(HasSubstr("192.0.2."))));
}

TEST_F(ZelkctlChanges, WhatCannotBeMeantChangesNothing)
{
    const std::string sKernel = Kernel();
    for (const wchar_t* pszArguments :
         {L"address set lan0 224.0.0.1/4 --yes", L"address set lan0 127.0.0.1/8 --yes",
          L"address set lan0 192.0.2.0/24 --yes", L"address set lan0 192.0.2.255/24 --yes",
          L"address set lan0 192.0.2.20/24 --gateway 198.51.100.1 --yes", L"gateway set lan0 192.0.2.10 --yes",
          L"dns set lan0 224.0.0.251", L"route add lan0 10.0.0.1/8 192.0.2.9", L"settings set lan0 --metric 0",
          L"adapter rename lan0 \"a|b\"", L"identity set-name \"two words\"",
          L"adapter set-mac lan0 01-00-00-00-00-01"})
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(pszArguments)));
        EXPECT_EQ("usage", Do(pszArguments, 2)["kind"]);
    }
    EXPECT_EQ(sKernel, Kernel());
}

TEST_F(ZelkctlChanges, TheMetricOfARouteCounts)
{
    Do(L"route add lan0 10.0.0.0/8 192.0.2.9 --metric 3", 0);
    EXPECT_EQ(0U, Plan(L"route add lan0 10.0.0.0/8 192.0.2.9").dwExitCode);
    EXPECT_THAT(Plan(L"route add lan0 10.0.0.0/8 192.0.2.9 --metric 4").paths, ElementsAre("routes"));
    EXPECT_THAT(Plan(L"route add lan0 10.0.0.0/8 192.0.2.9 --persistent").paths, ElementsAre("routes"));
    Do(L"route set lan0 10.0.0.0/8 192.0.2.8 --metric 6 --yes", 0);
    EXPECT_THAT(Kernel(), testing::AllOf(HasSubstr("10.0.0.0/8 via 192.0.2.8 metric 6"), Not(HasSubstr("192.0.2.9"))));
    Do(L"route remove lan0 10.0.0.0/8 --yes", 0);
    Do(L"route set lan0 0.0.0.0/0 192.0.2.2 --metric 4 --yes", 0);
    EXPECT_THAT(Kernel(), testing::AllOf(Not(HasSubstr("10.0.0.0")), Not(HasSubstr("via 192.0.2.1 ")),
                                         HasSubstr("default via 192.0.2.2 metric 4")));
}

TEST_F(ZelkctlChanges, BeforeVistaIpv6IsRefused)
{
    const std::string sKernel = Kernel();
    const Start start{.pszProgram = L"zelkctl-older.exe"};
    for (const wchar_t* pszArguments :
         {L"gateway set lan0 fe80::1 --yes", L"dns set lan0 2001:db8::53", L"settings set lan0 --mtu 1400"})
        EXPECT_EQ("unsupported", Do(pszArguments, 8, start)["kind"]) << testing::PrintToString(pszArguments);
    EXPECT_EQ(sKernel, Kernel());
}

TEST_F(ZelkctlChanges, ReturningToDhcpForgetsWhatIsStaticAndWantsALease)
{
    EXPECT_THAT(Plan(L"dhcp return lan0 --ipv4").paths, ElementsAre("ipv4.dhcp", "ipv4.gateways", "ipv4.dnsServers"));
    EXPECT_THAT(Plan(L"dhcp return lan0 --ipv4 --keep-dns").paths, ElementsAre("ipv4.dhcp", "ipv4.gateways"));
    Do(L"dhcp return lan0 --ipv4 --yes", 0);
    ASSERT_NO_FATAL_FAILURE(SetUp());
    const StandIn noServer("ZELK_NO_LEASE", "dhcp");
    const Result run = Run(L"dhcp return lan0 --ipv4 --yes --timeout 3");
    EXPECT_EQ(6U, run.dwExitCode) << run.sOut << run.sErr;
    EXPECT_THAT(Kernel(), Not(HasSubstr("192.0.2.")));
}

TEST_F(ZelkctlChanges, LeavesNoCommandOfTheLibraryRunningForEver)
{
    const StandIn hang("ZELK_HANG", "/renew");
    const Result run = Run(L"dhcp renew lan0 --ipv4 --timeout 2");
    EXPECT_EQ(5U, run.dwExitCode) << run.sErr;
    EXPECT_THAT(run.sErr, HasSubstr("ipconfig did not end in time and was ended"));
    const RegistryValueScope name(ConnectionKey(), L"Name", StringData(L"100 %PATH%"));
    EXPECT_EQ(8U, Run(L"dhcp renew lan0 --ipv4").dwExitCode);
}

TEST_F(ZelkctlChanges, AreRefusedUndoneOrDone)
{
    const std::wstring sSet = L"address set lan0 192.0.2.20/24 192.0.2.21/24 --dns 192.0.2.55 ";
    const struct
    {
        std::wstring sArguments;
        Start start;
        const char* pszVariable; ///< of the stand-in
        DWORD dwExitCode;
        const char* pszSaid; ///< on either output
    } rows[] = {
        {sSet + L"--check", {.bElevated = false}, "ZELK_NONE", 10, "set dnsservers"},
        {sSet, {}, "ZELK_NONE", 2, "Pass --yes to confirm."},
        {sSet + L"--yes", {.bElevated = false}, "ZELK_NONE", 4, "this requires elevation; nothing was changed"},
        {sSet + L"--yes", {}, "ZELK_REFUSED", 1, "The change failed; what was done was undone."},
        {sSet + L"--yes --timeout 3", {}, "ZELK_HANG", 5, "netsh.exe did not end in time and was ended."},
    };
    const std::string sKernel = Kernel();
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row.sArguments) + row.pszVariable);
        const StandIn standIn(row.pszVariable, "192.0.2.55");
        const Result result = Run(row.sArguments, row.start);
        EXPECT_EQ(row.dwExitCode, result.dwExitCode) << result.sErr;
        EXPECT_THAT(result.sOut + result.sErr, HasSubstr(row.pszSaid));
        EXPECT_EQ(sKernel, Kernel());
    }
    const StandIn refuses("ZELK_REFUSED", "192.0.2.55");
    EXPECT_TRUE(Do(sSet + L"--yes --keep", 1)["undo"].is_null());
    EXPECT_THAT(Kernel(), HasSubstr("192.0.2.21/24"));
}

TEST_F(ZelkctlChanges, NoCharacterOfANameBecomesSyntax)
{
    const std::wstring sKey =
        zelk::CONNECTIONS + (L'\\' + s_sFirst.substr(s_sFirst.rfind(L'\\') + 1)) + L"\\Connection";
    {
        const RegistryValueScope name(sKey, L"Name", StringData(L"a & b %PATH% ^(c) lan0"));
        Do(L"dns set lan0 192.0.2.57", 0);
        EXPECT_THAT(Kernel(), HasSubstr("nameserver 192.0.2.57\n"));
    }
    const RegistryValueScope name(sKey, L"Name", StringData(L"a\" b lan0"));
    EXPECT_EQ("unsupported", Do(L"dns set lan0 192.0.2.58", 8)["kind"]);
}

TEST_F(ZelkctlChanges, InterruptingUndoesThem)
{
    const std::string sKernel = Kernel();
    const StandIn hangs("ZELK_HANG", "192.0.2.55");
    Zelkctl program(L"address set lan0 192.0.2.20/24 192.0.2.21/24 --dns 192.0.2.55 --yes");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (Kernel().find("192.0.2.21/24") == std::string::npos)
        ASSERT_GT(end, std::chrono::steady_clock::now());
    ASSERT_TRUE(InterruptProgram("zelkctl.exe"));
    const std::string sSteps = program.ReadToEnd();
    EXPECT_EQ(1U, program.WaitForExitCode());
    EXPECT_THAT(program.Errors(), HasSubstr("The change was cancelled; what was done was undone.")) << sSteps;
    EXPECT_EQ(sKernel, Kernel());
}

TEST_F(ZelkctlChanges, ReachTheSameBeforeVista)
{
    const StandIn older("ZELK_GENERATION", "5");
    Do(L"address set lan0 198.51.100.1/25 --gateway 198.51.100.126 --dns 198.51.100.53 --yes", 0,
       {.pszProgram = L"zelkctl-older.exe"});
    EXPECT_THAT(Kernel(), testing::AllOf(HasSubstr("198.51.100.1/25"), HasSubstr("default via 198.51.100.126"),
                                         HasSubstr("nameserver 198.51.100.53"), Not(HasSubstr("192.0.2."))));
}

TEST_F(ZelkctlChanges, WhatIsExportedChangesNothing)
{
    const Result exported = Run(L"export");
    EXPECT_EQ(0U, exported.dwExitCode) << exported.sErr;
    WriteFileBytes(BesideProgram(L"exported.json"), exported.sOut);
    EXPECT_EQ(0U, Plan(L"apply \"" + BesideProgram(L"exported.json").wstring() + L'"').dwExitCode);
    EXPECT_EQ(Json::parse(exported.sOut)["adapters"][0]["ipv4"]["addresses"], Json::array({"192.0.2.10/24"}));
}

/// Each example of the page on desired states, one after the other.
TEST_F(ZelkctlChanges, ReachTheStatesThatTheDocumentsShow)
{
    const std::string sPage = ReadFileBytes(ZELK_DOCUMENTS "/desired-state.md");
    const std::filesystem::path file = BesideProgram(L"example.json");
    int examples = 0;
    for (std::size_t begin = sPage.find("```json\n"); begin != std::string::npos;
         begin = sPage.find("```json\n", begin + 1), ++examples)
    {
        const std::size_t first = begin + std::string_view("```json\n").size();
        WriteFileBytes(file, sPage.substr(first, sPage.find("```", first) - first));
        const Json result = Do(L"apply \"" + file.wstring() + L'"', 0);
        EXPECT_EQ("changed", result.value("outcome", "")) << result.dump(1);
    }
    EXPECT_LE(2, examples);
}

} // namespace
