// Every verb of the real zelkctl, on the network made for the test.

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cli/zelkctl_test.h>
#include <e2e/network.h>
#include <support/golden.h>
#include <support/registry_scope.h>

using namespace testing_support;
using namespace std::string_literals;
using testing::HasSubstr;

namespace
{

using ZelkctlFinds = ZelkctlTest;

/// The first link with everything that Windows keeps of an adapter.
class ZelkctlVerbs : public ZelkctlTest
{
protected:
    ZelkctlVerbs() : m_device(Links().at(0), StringData(L"ROOT\\NET\\0001"), StringData(L"ROOT\\NET\\0001"))
    {
        m_ipv4.Set(L"", L"EnableDHCP", DwordData(0));
        m_ipv4.Set(L"", L"IPAddress", ListData({L"192.0.2.10", L"10.77.0.5"}));
        m_ipv4.Set(L"", L"SubnetMask", ListData({L"255.255.255.0", L"255.255.0.0"}));
        m_ipv4.Set(L"", L"DefaultGateway", ListData({L"192.0.2.1"}));
        std::filesystem::create_directory(Folder());
        std::ofstream(Folder() / L"schema.json", std::ios::binary) << Run(L"schema").sOut;
    }

    /// Where the script around the tests finds the answers, to hold them against the schema.
    static std::filesystem::path Folder() { return BesideProgram(L"answers"); }

    /// The places behind " -> " in the JSON that the command before it answers, which is kept.
    static std::string Ask(const std::string& sQuestion)
    {
        static int count = 0;
        constexpr std::size_t BEGIN = std::string_view("zelkctl ").size();
        const std::size_t arrow = sQuestion.find(" -> ");
        const std::string sCommand = sQuestion.substr(BEGIN, arrow - BEGIN);
        const Result result = Run(std::wstring(sCommand.begin(), sCommand.end()) + L" --json");
        std::ofstream(Folder() / ("answer-" + std::to_string(count++) + ".json"), std::ios::binary) << result.sOut;
        const auto answer = nlohmann::json::parse(result.sOut);
        std::string sAll = result.dwExitCode != 0 ? "exit code " + std::to_string(result.dwExitCode) + '\n' : "";
        std::istringstream places(sQuestion.substr(arrow + 4));
        for (std::string sPlace; places >> sPlace;)
            sAll += answer.at(nlohmann::json::json_pointer(sPlace)).dump() + '\n';
        return sAll;
    }

private:
    Seeded m_device;
    RegistryKeyScope m_ipv4{L"SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\" +
                            std::wstring(Links().at(0).sGuid.c_str())};
};

TEST_F(ZelkctlVerbs, AnswerAsTheKernelDoes)
{
    ExpectTranscript(Ask);
    EXPECT_THAT(Run(L"show").sOut, HasSubstr("\nAdapter \"Connection lan0\"\nName "));
}

TEST_F(ZelkctlVerbs, FollowTheTraceLineByLine)
{
    Run(L"dhcp renew lan0 --ipv4"); // is traced
    Zelkctl follower(L"trace show --follow --json");
    std::ofstream(Folder() / L"lines-trace.json", std::ios::binary) << follower.ReadUntil("\n");
    follower.Terminate();
}

TEST_F(ZelkctlVerbs, ListsAdaptersInEightyColumns)
{
    const std::string sOut = Run(L"adapter list").sOut;
    EXPECT_THAT(sOut, HasSubstr("\nConnection lan0  Up         192.0.2.10/24    02-00-5E-10-00-0A  "));
    EXPECT_THAT(sOut, HasSubstr("\n                            2001:db8::10/64\n"));
    std::istringstream lines(sOut);
    for (std::string sLine; std::getline(lines, sLine);)
        EXPECT_GE(80U, sLine.size());
    EXPECT_EQ("Name             GUID\nConnection lan0  " + std::string(Links().at(0).sGuid.narrow_c_str()) + '\n',
              Run(L"adapter list lan0 --fields name,guid").sOut);
    EXPECT_THAT(Run(L"adapter list --wide").sOut, HasSubstr("192.0.2.10/24, 10.77.0.5/16, 2001:db8::10/64"));
}

TEST_F(ZelkctlFinds, AnAdapterByAnyOfItsIdentities)
{
    const Link link = Links().at(0);
    const Seeded seeded(link);
    const std::wstring sGuid = link.sGuid.c_str();
    const std::wstring sIndex = std::to_wstring(link.ulIndex);
    const std::wstring sMac(link.sHwAddr.begin(), link.sHwAddr.end());
    std::wstring sColons = sMac;
    std::ranges::replace(sColons, L'-', L':');
    for (const std::wstring& sIdentity :
         {std::wstring(L"lan0"), L"name:LAN0"s, L"\"connection LAN0\""s, sGuid, sGuid.substr(1, 36), L"guid:" + sGuid,
          sIndex, L"#" + sIndex, L"Index:" + sIndex, sMac, sColons, L"mac:" + sMac})
    {
        const Result result = Run(L"adapter show --get guid " + sIdentity);
        EXPECT_EQ(sGuid + L"\n", std::wstring(result.sOut.begin(), result.sOut.end()));
    }
    const Result none = Run(L"adapter show name:" + sIndex + L" --json");
    EXPECT_EQ(3U, none.dwExitCode);
    EXPECT_EQ("adapter", nlohmann::json::parse(none.sOut)["error"]["kind"]);

    const RegistryValueScope clash(Seeded::Connection(Links().at(1)), L"Name", StringData(L"lan0"));
    const Result ambiguous = Run(L"address list lan0");
    EXPECT_EQ(3U, ambiguous.dwExitCode);
    for (const std::size_t number : {std::size_t(0), std::size_t(1)})
        EXPECT_THAT(ambiguous.sErr, HasSubstr(Links().at(number).sGuid.narrow_c_str()));
    EXPECT_EQ(0U, Run(L"address list index:" + sIndex).dwExitCode);
}

TEST_F(ZelkctlVerbs, PlanChangesAndTellWhyTheyFail)
{
    WriteFileBytes(BesideProgram(L"state.json"),
                   R"({"schemaVersion": 1, "adapters": [{"adapter": "lan0", "mtu": 1400}]})");
    ExpectTranscript(Ask);
}

TEST_F(ZelkctlVerbs, NoCommandIsTakenFromTheCurrentDirectoryOrThePathBeforeTheSystem)
{
    const TempDirectory planted;
    for (const wchar_t* pszName : {L"CMD.exe", L"cmd.com", L"ipconfig.exe"})
        WriteFileBytes(planted / pszName, "no program");
    const std::filesystem::path before = std::filesystem::current_path();
    const std::wstring sPath = ::_wgetenv(L"PATH");
    std::filesystem::current_path(planted.Path());
    ::_wputenv((L"PATH=" + planted.Text() + L';' + sPath).c_str());
    EXPECT_THAT(Run(L"dhcp renew lan0 --ipv4").sErr, HasSubstr("the command printed: "));
    ::_wputenv((L"PATH=" + sPath).c_str());
    std::filesystem::current_path(before);
}

} // namespace
