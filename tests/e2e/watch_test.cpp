// The verb "watch" of the real zelkctl, while the kernel's network changes under it.

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cli/zelkctl_test.h>
#include <e2e/unix_command.h>

using namespace testing_support;
using testing::HasSubstr;
using Json = nlohmann::json;

namespace
{

/// Named so that it runs with what else changes the links.
class WatchedChanges : public ZelkctlTest
{
protected:
    static void Ip(const std::string& sArguments)
    {
        std::string sOutput;
        EXPECT_TRUE(RunUnix("ip " + sArguments, sOutput)) << sOutput;
    }

    /// Returns when the machine was read for the first time.
    static void AwaitStart(const Zelkctl& program)
    {
        const ULONGLONG ullEnd = ::GetTickCount64() + 20000;
        while (program.Errors().find("Ctrl+C") == std::string::npos)
            ASSERT_GT(ullEnd, ::GetTickCount64());
    }

    /// The next event of the item. All lines are kept, so that the script around the tests holds them against the
    /// schema.
    static Json NextEvent(Zelkctl& program, const std::string& sPath)
    {
        std::ofstream file(BesideProgram(L"answers") / L"lines-watch.json", std::ios::binary | std::ios::app);
        for (;;)
        {
            const std::string sLine = program.ReadUntil("\n");
            file << sLine;
            Json event = Json::parse(sLine);
            if (event["path"] == sPath)
                return event;
        }
    }
};

TEST_F(WatchedChanges, AreAnObjectALineUntilCtrlC)
{
    Zelkctl program(L"watch lan0 --json");
    AwaitStart(program);
    Ip("addr add 192.0.2.77/24 dev lan0");
    const Json address = NextEvent(program, "ipv4.addresses");
    EXPECT_EQ("lan0", address["adapter"]);
    EXPECT_EQ(address["before"].size() + 1, address["after"].size()) << address;
    EXPECT_THAT(address["after"].dump(), HasSubstr("\"192.0.2.77\""));
    Ip("route add 198.51.100.128/25 via 192.0.2.1 dev lan0 metric 4");
    EXPECT_THAT(NextEvent(program, "routes")["after"].dump(), HasSubstr("\"198.51.100.128/25\""));
    Ip("link set lan2 mtu 1300"); // is not watched
    Ip("link set lan0 down");
    EXPECT_EQ("unplugged", NextEvent(program, "status")["after"]);
    Ip("link set lan0 up");
    EXPECT_EQ("up", NextEvent(program, "status")["after"]);
    EXPECT_TRUE(InterruptProgram("zelkctl.exe"));
    EXPECT_THAT(program.ReadToEnd(), testing::Not(HasSubstr("lan2")));
    EXPECT_EQ(0U, program.WaitForExitCode());
}

TEST_F(WatchedChanges, AreALineForPeople)
{
    Zelkctl program(L"watch lan0");
    AwaitStart(program);
    Ip("addr add 192.0.2.78/24 dev lan0");
    EXPECT_THAT(program.ReadUntil("\n"), HasSubstr("Z  lan0  IPv4 addresses: added 192.0.2.78/24\n"));
    Ip("addr del 192.0.2.78/24 dev lan0");
    EXPECT_THAT(program.ReadUntil("\n"), HasSubstr("Z  lan0  IPv4 addresses: removed 192.0.2.78/24\n"));
    EXPECT_TRUE(InterruptProgram("zelkctl.exe"));
    EXPECT_EQ(0U, program.WaitForExitCode());
}

TEST_F(WatchedChanges, EndAWaitForThem)
{
    Zelkctl program(L"watch lan0 lan2 --until ipv4.addresses.address=192.0.2.79 --until ipv4.addresses=192.0.2.79/32");
    AwaitStart(program);
    Ip("addr add 192.0.2.79/32 dev lan0");
    EXPECT_THAT(program.ReadUntil("192.0.2.79"), HasSubstr("lan0"));
    Ip("addr add 192.0.2.79/32 dev lan2");
    EXPECT_THAT(program.ReadToEnd(), HasSubstr("lan2"));
    EXPECT_EQ(0U, program.WaitForExitCode()) << program.Errors();
}

TEST_F(WatchedChanges, AreNotWaitedForWithoutNeedOrWithoutEnd)
{
    const struct
    {
        const wchar_t* pszArguments;
        DWORD dwExitCode;
        const char* pszSaid;
    } rows[] = {
        {L"lan2 --until status=up --until ipv4.addresses=203.0.113.7/32", 0, ""},
        {L"lan2 --until hardwareAddress=06:00:00:00:00:02 --until ipv4.gateways=", 0, ""},
        {L"lan2 lan1 --until status=up --timeout 1", 5,
         "1 s are over, but adapter \"lan1\" does not have \"status=up\"\n"},
        {L"lan2 lan9 --until status=up", 3, "there is no adapter \"lan9\""},
    };
    for (const auto& row : rows)
    {
        const Result result = Run(L"watch " + std::wstring(row.pszArguments));
        EXPECT_EQ(row.dwExitCode, result.dwExitCode) << result.sErr;
        EXPECT_THAT(result.sErr, HasSubstr(row.pszSaid));
        EXPECT_EQ("", result.sOut);
    }
    const Json error = Json::parse(Run(L"watch lan1 --until status=up --timeout 1 --json").sOut);
    EXPECT_EQ(5, error["error"]["exitCode"]);
}

} // namespace
