// Every verb of the real zelkctl, on the network made for the test.

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cli/zelkctl_test.h>
#include <e2e/network.h>
#include <support/registry_scope.h>

using namespace testing_support;
using namespace std::string_literals;
using testing::HasSubstr;

namespace
{

using ZelkctlFinds = ZelkctlTest;

/// The key of a link's connection, whose name stand-ins know the link by: it is the last word.
std::wstring Connection(const Link& link)
{
    return std::wstring(CONTROL) + L"Network" + NETWORK + L"\\" + link.sGuid.c_str() + L"\\Connection";
}

/// The first link with everything that Windows keeps of an adapter.
class ZelkctlVerbs : public ZelkctlTest
{
protected:
    ZelkctlVerbs() : m_device(Links().at(0), StringData(L"ROOT\\NET\\0001"), StringData(L"ROOT\\NET\\0001"))
    {
        m_ipv4.Set(L"", L"EnableDHCP", DwordData(0));
        m_ipv4.Set(L"", L"IPAddress", StringData(L"192.0.2.10\0"s + L"10.77.0.5\0"s, REG_MULTI_SZ));
        m_ipv4.Set(L"", L"SubnetMask", StringData(L"255.255.255.0\0"s + L"255.255.0.0\0"s, REG_MULTI_SZ));
        m_ipv4.Set(L"", L"DefaultGateway", StringData(std::wstring(L"192.0.2.1") + L'\0', REG_MULTI_SZ));
        std::filesystem::create_directory(Folder());
        std::ofstream(Folder() / L"schema.json", std::ios::binary) << Run(L"schema").sOut;
    }

    /// Where the script around the tests finds the answers, to hold them against the schema.
    static std::filesystem::path Folder() { return BesideProgram(L"answers"); }

    /// The JSON of the command, which is kept.
    static nlohmann::json Ask(const std::wstring& sArguments, DWORD dwExitCode)
    {
        static int count = 0;
        const Result result = Run(sArguments + L" --json");
        EXPECT_EQ(dwExitCode, result.dwExitCode) << result.sErr;
        std::ofstream(Folder() / ("answer-" + std::to_string(count++) + ".json"), std::ios::binary) << result.sOut;
        return nlohmann::json::parse(result.sOut);
    }

private:
    Seeded m_device;
    RegistryKeyScope m_ipv4{L"SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\" +
                            std::wstring(Links().at(0).sGuid.c_str())};
};

TEST_F(ZelkctlVerbs, AnswerAsTheKernelDoes)
{
    const struct
    {
        const wchar_t* pszArguments;
        const char* pszPointer; ///< into the result
        nlohmann::json value;
    } rows[] = {
        {L"adapter list lan0 lan2", "/1/hardwareAddress", "06-00-00-00-00-02"},
        {L"adapter list", "/0/status", "up"},
        {L"adapter list --all", "/0/name", "Connection lan0"},
        {L"adapter show lan0", "/driver/description", "Driver of lan0"},
        {L"address list lan0", "/0/address", "192.0.2.10"},
        {L"dhcp status lan0", "/ipv4/configured/dhcp", false},
        {L"gateway list lan0", "/0", {{"address", "192.0.2.1"}, {"metric", 5}}},
        {L"gateway status lan0", "/ipv4/gateways/1/address", "10.77.0.1"},
        {L"dns list lan0", "/0/address", "192.0.2.53"},
        {L"dns status lan0", "/ipv4/dnsServers", {"192.0.2.53"}},
        {L"route list lan2", "/0/nextHop", "0.0.0.0"},
        {L"settings show lan0", "/ipv4/mtu", 1500},
        {L"identity show", "/primaryDnsSuffix", ""},
        {L"show", "/environment/bootImage", false},
        {L"version", "/version", "1.0.0.0"},
        {L"trace path", "/1/item", "trace"},
        {L"trace level", "/isDefault", true},
        {L"trace show --operation nothing", "", nlohmann::json::array()},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row.pszArguments));
        const auto answer = Ask(row.pszArguments, 0);
        EXPECT_EQ(row.value, answer["result"].at(nlohmann::json::json_pointer(row.pszPointer)));
    }
    Ask(L"pending", 0);
    Ask(L"confirm", 1);
    Ask(L"restore", 1);
    Ask(L"doctor", 1);
    Ask(L"tcp6 list", 0);
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

    const RegistryValueScope clash(Connection(Links().at(1)), L"Name", StringData(L"lan0"));
    const Result ambiguous = Run(L"address list lan0");
    EXPECT_EQ(3U, ambiguous.dwExitCode);
    for (const std::size_t number : {std::size_t(0), std::size_t(1)})
        EXPECT_THAT(ambiguous.sErr, HasSubstr(Links().at(number).sGuid.narrow_c_str()));
    EXPECT_EQ(0U, Run(L"address list index:" + sIndex).dwExitCode);
}

/// What a change would do, and what becomes of it where the system's commands do nothing and its devices are not there.
TEST_F(ZelkctlVerbs, PlanChangesAndTellWhyTheyFail)
{
    const struct
    {
        const wchar_t* pszArguments;
        const char* pszPath;  ///< of the first item that --check shows
        DWORD dwReally;       ///< exit code when it is done
        const char* pszMeans; ///< of the first step
    } rows[] = {
        {L"adapter disable lan0", "enabled", 1, "TOLVA::DisableAdapter"},
        {L"adapter set-mac lan0 02-00-00-00-00-77", "hardwareAddress", 1, "TOLVA::SetHardwareAddress"},
        {L"adapter rename lan0 Uplink", "connectionName", 6, "netsh.exe"},
        {L"address set lan0 198.51.100.1/25", "ipv4.addresses", 6, "netsh.exe"},
        {L"address add lan0 192.0.2.11/24", "ipv4.addresses", 6, "netsh.exe"},
        {L"address remove lan0 10.77.0.5", "ipv4.addresses", 6, "netsh.exe"},
        {L"dhcp return lan0 --ipv4", "ipv4.dhcp", 6, "netsh.exe"},
        {L"gateway set lan0 192.0.2.9 --metric 3", "ipv4.gateways", 6, "netsh.exe"},
        {L"gateway return lan0 --ipv4", "ipv4.gateways", 6, "netsh.exe"},
        {L"dns set lan0 192.0.2.54 2001:db8::54", "ipv4.dnsServers", 6, "netsh.exe"},
        {L"route add lan0 198.51.100.0/24 192.0.2.1", "routes", 6, "netsh.exe"},
        {L"route set lan0 198.18.0.0/15 192.0.2.1", "routes", 6, "netsh.exe"},
        {L"route remove lan0 198.18.0.0/15", "routes", 6, "netsh.exe"},
        {L"settings set lan0 --mtu 1400 --ipv4", "ipv4.mtu", 6, "netsh.exe"},
        {L"identity set-workgroup WORKSHOP", "identity.workgroup", 1, "TOLVA::SetWorkgroupName"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row.pszArguments));
        const auto planned = Ask(std::wstring(row.pszArguments) + L" --check", 10)["result"];
        EXPECT_EQ(row.pszPath, planned["items"].at(0)["path"]);
        EXPECT_EQ(row.pszMeans, planned["steps"].at(0)["means"]);
        const auto done = Ask(std::wstring(row.pszArguments) + L" --yes --keep --timeout 1", row.dwReally)["result"];
        EXPECT_EQ(row.pszPath, done["differences"].at(0)["path"]);
    }
}

TEST_F(ZelkctlVerbs, AnswerWhatIsNoDifferenceOrNoState)
{
    for (const wchar_t* pszArguments : {L"adapter enable lan0", L"dns return lan0 --ipv4"})
        EXPECT_EQ("unchanged", Ask(pszArguments, 0)["result"]["outcome"]) << testing::PrintToString(pszArguments);
    EXPECT_EQ(true, Ask(L"adapter disable lan0 --yes", 1)["result"]["undo"]["complete"]);
    const std::filesystem::path state = BesideProgram(L"state.json");
    WriteFileBytes(state, R"({"schemaVersion": 1, "adapters": [{"adapter": "lan0", "mtu": 1400}]})");
    Ask(L"apply \"" + state.wstring() + L"\" --check", 10);
    for (const wchar_t* pszName : {L"identity set-name station7", L"identity set-suffix example.org"})
        Ask(pszName + L" --check"s, 10);
    for (const wchar_t* pszArguments :
         {L"dhcp renew lan0 --ipv4", L"dhcp release lan0 --ipv4 --yes", L"dns flush", L"dns register"})
        Ask(pszArguments, 1); // this system's ipconfig knows none of it
    EXPECT_EQ(false, Ask(L"adapter options lan0", 0)["result"]["shown"]);
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
