// The verbs of the real zelkctl that change something, on a kernel and a registry that a stand-in for netsh changes.

#include "zelkctl_changes.h"

namespace
{

class ZelkctlSessions : public ZelkctlChanges, public testing::WithParamInterface<const char*>
{
};

INSTANTIATE_TEST_SUITE_P(, ZelkctlSessions,
                         testing::Values("OfDnsServers", "OfAddresses", "ThatCannotBeMeant", "OfRoutes", "BeforeVista",
                                         "ToDhcp", "RefusedUndoneOrDone"),
                         [](const auto& param) { return std::string(param.param); });

TEST_P(ZelkctlSessions, Changes)
{
    ExpectSession();
}

TEST_F(ZelkctlChanges, WhatDhcpGaveIsNotStatic)
{
    const std::wstring sKey = zelk::IPV4_INTERFACES + s_sGuid;
    const RegistryValueScope dhcp(sKey, L"EnableDHCP", DwordData(1));
    const RegistryValueScope gateway(sKey, L"DefaultGateway", ListData({}));
    ExpectSession();
}

TEST_F(ZelkctlChanges, NoCharacterOfANameBecomesSyntax)
{
    {
        const RegistryValueScope name(ConnectionKey(), L"Name", StringData(L"a & b %PATH% ^(c) lan0"));
        Do(L"dns set lan0 192.0.2.57", 0);
        EXPECT_THAT(Kernel(), HasSubstr("nameserver 192.0.2.57\n"));
        EXPECT_EQ(8U, Run(L"dhcp renew lan0 --ipv4").dwExitCode) << "the interpreter would expand it";
    }
    const RegistryValueScope name(ConnectionKey(), L"Name", StringData(L"a\" b lan0"));
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
