// Changes that wait to be confirmed or were interrupted, of the real zelkctl on a kernel and a registry.

#include "pending_changes.h"

namespace
{

/// The change takes longer than the time, which begins when the change is done.
TEST_F(Pending, ChangesAreRestoredWhenNobodyConfirmsThem)
{
    const StandIn slow("ZELK_SLOW", "set dnsservers");
    const Json result = Do(std::wstring(CHANGE) + L"--confirm-within 3", 0);
    const auto done = std::chrono::steady_clock::now();
    EXPECT_EQ("changed", result["outcome"]);
    EXPECT_THAT(Kernel(), HasSubstr("198.51.100.20/24"));
    EXPECT_TRUE(Await([] { return Kernel().find("198.51.100.20/24") == std::string::npos; }));
    EXPECT_GE(std::chrono::steady_clock::now() - done, std::chrono::seconds(2));
    EXPECT_TRUE(Await([] { return ListPending().empty(); }));
    EXPECT_EQ(m_sBefore, Standing());
    const Result late = Run(L"confirm");
    EXPECT_EQ(1U, late.dwExitCode);
    EXPECT_THAT(late.sErr, HasSubstr("because nobody confirmed the change in time"));
    EXPECT_EQ(1U, Run(L"restore").dwExitCode) << "nothing is left to do";
    for (int i = 0; i < 2; ++i)
        EXPECT_THAT(Run(L"adapter list").sErr, HasSubstr("was taken back. The previous state was restored at "));
    EXPECT_EQ(0U, Run(L"restore --discard").dwExitCode) << "without a question";
    EXPECT_EQ("", Run(L"adapter list").sErr);
}

TEST_F(Pending, ChangesStayWhenTheyAreConfirmed)
{
    Do(std::wstring(CHANGE) + L"--confirm-within 600", 0);
    const Json pending = ListPending();
    ASSERT_EQ(1U, pending.size());
    EXPECT_EQ("waiting", pending[0]["phase"]);
    EXPECT_TRUE(pending[0]["watched"]);
    EXPECT_LE(pending[0]["secondsLeft"], 600);
    EXPECT_THAT(Run(L"adapter list").sErr, HasSubstr("waits for \"zelkctl confirm\""));

    const std::string sChanged = Standing();
    const Result other = Run(L"dns set lan0 192.0.2.1");
    EXPECT_EQ(7U, other.dwExitCode);
    EXPECT_THAT(other.sErr, HasSubstr("waits to be confirmed for "));
    const Handle watcher = Watcher();
    EXPECT_EQ(Json::array({pending[0]["id"]}),
              Do(L"confirm " + zelk::FromUtf8(pending[0]["id"].get<std::string>()), 0)["confirmed"]);
    AwaitEndOf(watcher);
    EXPECT_EQ(sChanged, Standing());
    EXPECT_EQ(1U, Run(L"confirm").dwExitCode);
    EXPECT_EQ(0U, Run(L"dns set lan0 198.51.100.53 198.51.100.54").dwExitCode);
    EXPECT_EQ(sChanged, Standing());
}

TEST_F(Pending, ChangesAreConfirmedByAHostThatAnswers)
{
    Do(std::wstring(CHANGE) + L"--confirm-within 600 --wait-for 198.51.100.20", 0);
    EXPECT_TRUE(Await([] { return ListPending().empty(); }));
    EXPECT_THAT(Kernel(), HasSubstr("198.51.100.20/24"));
}

TEST_F(Pending, ChangesAreLeftAloneRestoredOrStillNamed)
{
    ExpectSession();
}

TEST_F(Pending, WhatCouldNotBeUndoneIsNotPromised)
{
    ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, (zelk::IPV4_INTERFACES + s_sGuid).c_str(), L"EnableDHCP");
    const std::string sBefore = Standing();
    const Json refused = Do(std::wstring(CHANGE) + L"--confirm-within 600", 8);
    EXPECT_THAT(refused.dump(), HasSubstr("the change could not be undone"));
    EXPECT_EQ(sBefore, Standing());
    EXPECT_TRUE(ListPending().empty());
    SetValue(zelk::IPV4_INTERFACES + s_sGuid, L"EnableDHCP", DwordData(0));
}

TEST_F(Pending, NoCommandOutlivesTheProcessThatStartedIt)
{
    const StandIn hangs("ZELK_HANG", "set dnsservers");
    Zelkctl program(std::wstring(CHANGE) + L"--confirm-within 600");
    EXPECT_TRUE(Await([] { return Kernel().find("nameserver 198.51.100.53") != std::string::npos; }));
    const Handle command = ProcessOf(L"\\netsh.exe");
    program.Terminate();
    AwaitEndOf(command);
    AwaitEndOf(Watcher());
    EXPECT_EQ(m_sBefore, Standing());
}

/// Each wants an address, a gateway and a server that go together.
TEST_F(Pending, ChangersTakeTurns)
{
    constexpr int CHANGERS = 20;
    std::vector<std::unique_ptr<Zelkctl>> changers;
    for (int i = 0; i < CHANGERS; ++i)
    {
        const std::wstring sNetwork = L" 10.0." + std::to_wstring(i) + L'.';
        changers.push_back(std::make_unique<Zelkctl>(L"address set lan" + std::to_wstring(i % 2) + sNetwork +
                                                     L"20/24 --gateway" + sNetwork + L"1 --dns" + sNetwork +
                                                     L"53 --timeout 300 --yes"));
    }
    for (const auto& changer : changers)
        EXPECT_EQ(0U, changer->WaitForExitCode()) << changer->Errors();
    EXPECT_TRUE(ListPending().empty());
    const Json state = Json::parse(Run(L"export").sOut);
    for (const int iLink : {0, 1})
    {
        const Json ip = state["adapters"].at(static_cast<std::size_t>(iLink))["ipv4"];
        std::string sNetwork = ip["addresses"].at(0);
        sNetwork.erase(sNetwork.rfind('.'));
        EXPECT_EQ(Json::array({sNetwork + ".20/24"}), ip["addresses"]);
        EXPECT_THAT(ip["gateways"].dump(), HasSubstr('"' + sNetwork + ".1\""));
        EXPECT_EQ(Json::array({sNetwork + ".53"}), ip["dnsServers"]);
        EXPECT_EQ(iLink, std::stoi(sNetwork.substr(sNetwork.rfind('.') + 1)) % 2);
    }
}

} // namespace
