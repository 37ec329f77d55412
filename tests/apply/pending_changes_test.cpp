// Changes that wait to be confirmed or were cut short, of the real zelkctl on a kernel and a registry.

#include "zelkctl_changes.h"

namespace
{

class Pending : public ZelkctlChanges
{
protected:
    void SetUp() override
    {
        Run(L"restore --discard --yes");
        ZelkctlChanges::SetUp();
        m_sBefore = Standing();
    }

    static std::string Standing() { return Kernel() + Registry(); }

    static Json ListPending() { return Json::parse(Run(L"pending --json").sOut)["result"]; }

    /// Waits for what another process is to do.
    template <class Condition>
    static bool Await(Condition condition)
    {
        constexpr ULONGLONG PATIENCE_MS = 60000;
        const ULONGLONG ullEnd = ::GetTickCount64() + PATIENCE_MS;
        while (!condition())
        {
            if (::GetTickCount64() > ullEnd)
                return false;
            ::Sleep(100);
        }
        return true;
    }

    static std::string Registry()
    {
        std::string text;
        for (const wchar_t* pszName :
             {L"EnableDHCP", L"IPAddress", L"SubnetMask", L"DefaultGateway", L"DefaultGatewayMetric", L"NameServer"})
        {
            BYTE data[1024] = {};
            DWORD dwSize = sizeof(data);
            const LSTATUS code =
                ::RegGetValueW(HKEY_LOCAL_MACHINE, s_sFirst.c_str(), pszName, RRF_RT_ANY, nullptr, data, &dwSize);
            text += std::to_string(code) + ' ' + testing::PrintToString(std::vector<BYTE>(data, data + dwSize)) + '\n';
        }
        return text;
    }

    static constexpr const wchar_t* CHANGE = L"address set lan0 198.51.100.20/24 --gateway 198.51.100.1 "
                                             L"--dns 198.51.100.53 198.51.100.54 --yes ";
    std::string m_sBefore;
};

TEST_F(Pending, ChangesAreRestoredWhenNobodyConfirmsThem)
{
    const Json result = Do(std::wstring(CHANGE) + L"--confirm-within 2", 0);
    EXPECT_EQ("changed", result["outcome"]);
    EXPECT_THAT(Kernel(), HasSubstr("198.51.100.20/24"));
    EXPECT_TRUE(Await([] { return ListPending().empty(); }));
    EXPECT_EQ(m_sBefore, Standing());
    EXPECT_EQ(1U, Run(L"confirm").dwExitCode) << "it is too late";
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
    EXPECT_EQ(0U, Run(L"confirm").dwExitCode);
    EXPECT_TRUE(ListPending().empty());
    EXPECT_EQ(1U, Run(L"confirm").dwExitCode);
    EXPECT_EQ(0U, Run(L"dns set lan0 198.51.100.53 198.51.100.54").dwExitCode);
    EXPECT_EQ(sChanged, Standing());
}

TEST_F(Pending, ChangesAreConfirmedByAHostThatAnswersOrRestoredAtOnce)
{
    Do(std::wstring(CHANGE) + L"--confirm-within 600 --wait-for 198.51.100.20", 0);
    EXPECT_TRUE(Await([] { return ListPending().empty(); }));
    EXPECT_THAT(Kernel(), HasSubstr("198.51.100.20/24"));
    const std::string sBefore = Standing();
    Do(L"address set lan0 203.0.113.20/24 --yes --confirm-within 600", 0);
    EXPECT_EQ(0U, Run(L"restore --yes").dwExitCode);
    EXPECT_TRUE(ListPending().empty());
    EXPECT_EQ(sBefore, Standing());
}

TEST_F(Pending, ChangesThatFailLeaveNothing)
{
    const StandIn refuses("ZELK_REFUSED", "198.51.100.54");
    Do(std::wstring(CHANGE) + L"--confirm-within 1", 1);
    EXPECT_TRUE(ListPending().empty());
    EXPECT_EQ(m_sBefore, Standing());
    EXPECT_EQ(1U, Run(L"restore --yes").dwExitCode);
}

TEST_F(Pending, ChangesWhoseProcessDiesCanBeRestored)
{
    for (const char* pszStep : {"198.51.100.20", "set dnsservers", "index=2"})
    {
        SCOPED_TRACE(pszStep);
        {
            const StandIn hangs("ZELK_HANG", pszStep);
            Zelkctl program(std::wstring(CHANGE) + L"--json");
            EXPECT_TRUE(Await([] { return !ListPending().empty(); }));
            EXPECT_TRUE(Await([pszStep] {
                return Kernel().find("198.51.100.") != std::string::npos ||
                       std::string_view(pszStep) == "198.51.100.20";
            }));
            program.Terminate();
            program.WaitForExitCode();
        }
        EXPECT_THAT(Run(L"adapter list").sErr, HasSubstr("It was cut short; \"zelkctl restore\""));
        EXPECT_EQ(1U, Run(L"confirm").dwExitCode);
        EXPECT_EQ(0U, Run(L"restore --yes").dwExitCode);
        EXPECT_EQ(m_sBefore, Standing());
        EXPECT_TRUE(ListPending().empty());
    }
}

TEST_F(Pending, ChangesToBeConfirmedAreRestoredWhenTheirProcessDies)
{
    const StandIn hangs("ZELK_HANG", "set dnsservers");
    Zelkctl program(std::wstring(CHANGE) + L"--confirm-within 600 --json");
    EXPECT_TRUE(Await([] { return Kernel().find("198.51.100.20/24") != std::string::npos; }));
    program.Terminate();
    EXPECT_TRUE(Await([] { return ListPending().empty(); }));
    EXPECT_EQ(m_sBefore, Standing());
}

TEST_F(Pending, RecordsOfDoubtAreNamedAndBlockNothing)
{
    Do(std::wstring(CHANGE) + L"--confirm-within 600", 0); // so that the folder is there
    EXPECT_EQ(0U, Run(L"confirm").dwExitCode);
    wchar_t szWindows[MAX_PATH] = {};
    ::GetWindowsDirectoryW(szWindows, MAX_PATH);
    const std::filesystem::path folder = std::filesystem::path(szWindows) / L"ZELK" / L"Changes";
    WriteFileBytes(folder / L"0123456789abcdef.json", "{\"recordVersion\": 1, \"id\"");
    EXPECT_THAT(Run(L"adapter list").sErr, HasSubstr("Its record cannot be used"));
    EXPECT_EQ(0U, Run(L"dns set lan0 192.0.2.1").dwExitCode);
    EXPECT_EQ(1U, Run(L"restore --yes").dwExitCode);
    EXPECT_EQ(0U, Run(L"restore --discard --yes").dwExitCode);
    EXPECT_TRUE(ListPending().empty());
}

TEST_F(Pending, ChangersTakeTurns)
{
    constexpr int CHANGERS = 20;
    std::vector<std::unique_ptr<Zelkctl>> changers;
    for (int i = 0; i < CHANGERS; ++i)
        changers.push_back(std::make_unique<Zelkctl>(L"address add lan" + std::to_wstring(i % 2) + L" 10.0.0." +
                                                     std::to_wstring(i + 1) + L"/32 --timeout 300 --yes"));
    for (const auto& changer : changers)
        EXPECT_EQ(0U, changer->WaitForExitCode()) << changer->Errors();
    std::string sAddresses;
    ASSERT_TRUE(RunUnix("ip -o -4 addr show | grep -c ' 10[.]0[.]0[.]'", sAddresses));
    EXPECT_EQ("20\n", sAddresses);
    EXPECT_TRUE(ListPending().empty());
}

} // namespace
