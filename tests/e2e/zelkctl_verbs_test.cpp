// Every verb of the real zelkctl, on the network made for the test.

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cli/zelkctl_test.h>
#include <e2e/network.h>
#include <support/registry_scope.h>

using namespace testing_support;
using testing::HasSubstr;

namespace
{

/// The first link with everything that Windows keeps of an adapter.
class ZelkctlVerbs : public ZelkctlTest
{
protected:
    ZelkctlVerbs() : m_device(Links().at(0), StringData(L"ROOT\\NET\\0001"), StringData(L"ROOT\\NET\\0001"))
    {
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
        {L"dhcp status lan0", "/ipv4/configured/dhcp", nullptr},
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
    Ask(L"doctor", 1);
    Ask(L"tcp6 list", 0);
    EXPECT_THAT(Run(L"show").sOut, HasSubstr("\nAdapter \"Connection lan0\"\nName "));
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

/// What a change would do, and what it says when the system does not let it.
TEST_F(ZelkctlVerbs, PlanChangesAndTellWhyTheyFail)
{
    const struct
    {
        const wchar_t* pszArguments;
        DWORD dwExitCode; ///< of --check
        const char* pszItem;
        const wchar_t* pszReally; ///< more arguments when it is done; null when it is not
        const char* pszTold;
    } rows[] = {
        {L"adapter enable lan0", 0, "enabled", L"", "No more data available (259)"},
        {L"adapter disable lan0", 10, "enabled", L" --yes", "No more data available (259)"},
        {L"adapter set-mac lan0 02-00-00-00-00-77", 10, "hardwareAddress", L" --yes", "SetHardwareAddress"},
        {L"dhcp renew lan0 --ipv4", 10, "ipv4LeasedAddresses", L"", "the command printed: "},
        {L"dhcp release lan0 --ipv4", 10, "ipv4LeasedAddresses", L" --yes", "the command printed: "},
        {L"dhcp return lan0", 10, "ipv4.configured.dhcp", nullptr, ""},
        {L"gateway set lan0 192.0.2.9", 10, "ipv4.gateways.address", L" --yes", "SetDefaultGateway"},
        {L"gateway return lan0", 10, "ipv4.configured.gateways", nullptr, ""},
        {L"dns set lan0 192.0.2.54 2001:db8::54", 10, "ipv4.configured.dnsServers", L" --no-verify", "static DNS"},
        {L"dns return lan0", 10, "ipv4.configured.dnsServers", L" --no-verify", "no static DNS"},
        {L"route add lan0 198.51.100.0/24 192.0.2.1", 10, "route", L"", "AddAdapterRoute"},
        {L"identity set-name station7", 10, "configured.computerName", nullptr, ""},
        {L"identity set-workgroup WORKSHOP", 10, "workgroup", nullptr, ""},
        {L"identity set-suffix example.org", 10, "configured.primaryDnsSuffix", nullptr, ""},
        {L"address set lan0 198.51.100.1/25", 10, "ipv4Addresses", nullptr, ""},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row.pszArguments));
        const auto answer = Ask(std::wstring(row.pszArguments) + L" --check", row.dwExitCode);
        EXPECT_EQ(row.pszItem, answer["result"]["items"][0]["item"]);
        if (row.pszReally == nullptr)
            continue;
        EXPECT_THAT(Run(row.pszArguments + std::wstring(row.pszReally)).sErr, HasSubstr(row.pszTold));
    }
    EXPECT_EQ(false, Ask(L"adapter options lan0", 0)["result"]["shown"]);
}

} // namespace
