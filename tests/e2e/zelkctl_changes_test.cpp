// The real zelkctl on the network made for the test.

#include <algorithm>
#include <cstdlib>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cli/zelkctl_test.h>
#include <e2e/network.h>
#include <e2e/unix_command.h>
#include <support/printers.h>
#include <support/registry_scope.h>

using namespace testing_support;
using namespace std::string_literals;
using testing::HasSubstr;

namespace
{

using Json = nlohmann::json;
using ZelkctlFinds = ZelkctlTest;
using ZelkctlChanges = ZelkctlTest;

/// The key of a link's connection, whose name stand-ins know the link by: it is the last word.
std::wstring Connection(const Link& link)
{
    return std::wstring(CONTROL) + L"Network" + NETWORK + L"\\" + link.sGuid.c_str() + L"\\Connection";
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

/// A change is planned, refused, done and verified.
TEST_F(ZelkctlChanges, AddressesOnlyAsFarAsAskedFor)
{
    const Seeded seeded(Links().at(0));
    ::_wputenv((L"PATH=" + BesideProgram(L"stand_ins").wstring() + L"\\;" + ::_wgetenv(L"SystemRoot") + L"\\system32\\")
                   .c_str());
    std::string sOutput;
    ASSERT_TRUE(RunUnix("ip addr flush dev lan0; ip addr add 192.0.2.10/24 dev lan0", sOutput)) << sOutput;
    const std::wstring sSet = L"address set lan0 198.51.100.1/25 2001:db8::99/64 ";
    const std::string BEFORE = "192.0.2.10/24 ";
    const std::string AFTER = "198.51.100.1/25 2001:db8::99/64 ";
    const struct
    {
        std::wstring sArguments;
        Start start;
        const char* pszVariable; ///< of the stand-in, with its value
        DWORD dwExitCode;
        std::string sAfterwards;
        const char* pszSaid; ///< on the standard output
    } rows[] = {
        {sSet + L"--check", {}, "", 10, BEFORE, "*  IPv4 addresses         192.0.2.10/24  198.51.100.1/25\n"},
        {sSet, {}, "", 2, BEFORE, ""},
        {sSet + L"--yes --json", {.bElevated = false}, "", 4, BEFORE, "\"kind\": \"elevation\""},
        {sSet + L"--check", {.bElevated = false}, "", 10, BEFORE, ""},
        {L"address set lan0 198.51.100.1/25 198.51.100.2/25 --yes --json", {}, "", 2, BEFORE, "\"kind\": \"usage\""},
        {sSet + L"--yes --json",
         {},
         "ZELK_REFUSED=delete 192.0.2.10",
         1,
         BEFORE,
         "\"operation\": \"SetAdaptersIpAddrs\""},
        {sSet + L"--yes --no-verify", {}, "ZELK_IDLE=1", 0, BEFORE, ""},
        {sSet + L"--yes --json",
         {},
         "ZELK_IDLE=1",
         1,
         BEFORE,
         "the change cannot be verified: IPv4 addresses: 192.0.2.10/24 instead of"},
        {sSet + L"--yes --json", {}, "", 0, AFTER, "\"verified\": true"},
        {sSet + L"--check", {}, "", 0, AFTER, "=  IPv4 addresses"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::Message() << testing::PrintToString(row.sArguments) << ' ' << row.pszVariable);
        for (const char* pszVariable : {"ZELK_REFUSED=", "ZELK_IDLE=", row.pszVariable})
            ::_putenv(pszVariable);
        const Result result = Run(row.sArguments, row.start);
        EXPECT_EQ(row.dwExitCode, result.dwExitCode) << result.sErr;
        EXPECT_THAT(result.sOut, HasSubstr(row.pszSaid));
        EXPECT_TRUE(RunUnix("ip -o addr show dev lan0 | awk '{print $4}' | sort | tr '\\n' ' '", sOutput));
        EXPECT_EQ(row.sAfterwards, sOutput);
    }
}

TEST_F(ZelkctlChanges, AreVerifiedOnBothGenerations)
{
    const RegistryKeyScope key(std::wstring(L"SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\") +
                               Links().at(1).sGuid.c_str());
    const Seeded seeded(Links().at(1));
    ::RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Wine\\AppDefaults\\zelkctl-older.exe", L"Version", REG_SZ,
                      L"winxp64", sizeof(L"winxp64"));
    ASSERT_TRUE(::CopyFileW(BesideProgram(L"zelkctl.exe").c_str(), BesideProgram(L"zelkctl-older.exe").c_str(), FALSE));
    for (const wchar_t* pszProgram : {L"zelkctl.exe", L"zelkctl-older.exe"})
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(pszProgram)));
        key.Set(L"", L"DefaultGateway", StringData(std::wstring(L"192.0.2.1") + L'\0', REG_MULTI_SZ));
        EXPECT_EQ(10U, Run(L"gateway return lan1 --ipv4 --check", {.pszProgram = pszProgram}).dwExitCode);
        const Result result = Run(L"gateway return lan1 --ipv4 --json", {.pszProgram = pszProgram});
        EXPECT_EQ(0U, result.dwExitCode) << result.sErr;
        const auto item = nlohmann::json::parse(result.sOut)["result"]["items"][0];
        EXPECT_EQ(
            Json::array({Json::array({{{"address", "192.0.2.1"}, {"metric", nullptr}}}), Json::array(), Json::array()}),
            Json::array({item["before"], item["wanted"], item["now"]}));
        EXPECT_EQ(0U, Run(L"gateway return lan1 --ipv4 --check", {.pszProgram = pszProgram}).dwExitCode);
    }
}

} // namespace
