#pragma once

#include <algorithm>
#include <chrono>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cli/zelkctl_test.h>
#include <e2e/unix_command.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>
#include <state/reading/read_machine.h>
#include <support/registry_scope.h>

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Json = nlohmann::json;

/// Both links are installed adapters; the first one has everything.
class ZelkctlChanges : public ZelkctlTest
{
protected:
    struct Planned
    {
        DWORD dwExitCode;
        std::vector<std::string> paths; ///< of what differs
        Json result;
    };

    static void SetUpTestSuite()
    {
        for (const zelk::Adapter& adapter : zelk::ReadMachine().adapters)
            if (adapter.friendlyName && adapter.friendlyName->starts_with("lan"))
                Register(zelk::FromUtf8(adapter.guid->ToText()), zelk::FromUtf8(*adapter.friendlyName));
        WriteFileBytes(BesideProgram(L"start.json"), START);
        ::RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Wine\\AppDefaults\\zelkctl-older.exe", L"Version", REG_SZ,
                          L"winxp64", sizeof(L"winxp64"));
        ::CopyFileW(BesideProgram(L"zelkctl.exe").c_str(), BesideProgram(L"zelkctl-older.exe").c_str(), FALSE);
    }

    void SetUp() override
    {
        const Result result = Run(L"apply \"" + BesideProgram(L"start.json").wstring() + L"\" --timeout 15");
        ASSERT_EQ(0U, result.dwExitCode) << result.sOut << result.sErr;
    }

    static void Register(const std::wstring& sGuid, const std::wstring& sLink)
    {
        const DWORD dwOff = 0;
        const std::wstring sName = L"Connection " + sLink;
        ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, (zelk::CONNECTIONS + (L'\\' + sGuid) + L"\\Connection").c_str(), L"Name",
                          REG_SZ, sName.c_str(), static_cast<DWORD>((sName.size() + 1) * sizeof(wchar_t)));
        ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, (zelk::IPV4_INTERFACES + sGuid).c_str(), L"EnableDHCP", REG_DWORD, &dwOff,
                          sizeof(dwOff));
        if (sLink == L"lan0")
            s_sFirst = zelk::IPV4_INTERFACES + sGuid;
    }

    /// What the kernel has of the first link.
    static std::string Kernel()
    {
        std::string sOutput;
        EXPECT_TRUE(RunUnix("ip -o addr show dev lan0 | awk '{print $4}' | sort; ip route show dev lan0 | sort; "
                            "ip -6 route show default; cat /etc/resolv.conf",
                            sOutput));
        return sOutput;
    }

    static Planned Plan(const std::wstring& sArguments, const Start& start = {})
    {
        const Result run = Run(sArguments + L" --check --json", start);
        Planned planned{run.dwExitCode, {}, Json::parse(run.sOut).value("result", Json::object())};
        for (const Json& item : planned.result.value("items", Json::array()))
            planned.paths.push_back(item["path"]);
        return planned;
    }

    /// The answer of a change that ends as expected.
    static Json Do(const std::wstring& sArguments, DWORD dwExitCode, const Start& start = {})
    {
        const Result run = Run(sArguments + L" --json --timeout 15", start);
        EXPECT_EQ(dwExitCode, run.dwExitCode) << run.sOut << run.sErr;
        const Json answer = Json::parse(run.sOut);
        return answer.contains("result") ? answer["result"] : answer["error"];
    }

    static std::vector<std::string> CommandsOf(const Json& result)
    {
        std::vector<std::string> commands;
        for (const Json& step : result["steps"])
            commands.push_back(step["command"].is_null() ? step["means"] : step["command"]);
        return commands;
    }

    static std::wstring ConnectionKey()
    {
        return zelk::CONNECTIONS + s_sFirst.substr(s_sFirst.rfind(L'\\')) + L"\\Connection";
    }

    static inline std::wstring s_sFirst; ///< the registry key of the first link
    static constexpr const char* START = R"({"schemaVersion": 1, "adapters": [
        {"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.10/24"], "gateways": [{"address": "192.0.2.1", "metric": 5}],
                                     "dnsServers": ["192.0.2.53", "192.0.2.54"]},
         "ipv6": {"addresses": ["2001:db8::10/64"]}, "routes": []},
        {"adapter": "lan1", "ipv4": {"addresses": ["203.0.113.7/24"], "gateways": []}, "routes": []}]})";
};

/// A stand-in does something else with commands that hold the text.
class StandIn
{
public:
    StandIn(const char* pszVariable, const char* pszText) : m_pszVariable(pszVariable)
    {
        ::SetEnvironmentVariableA(pszVariable, pszText);
    }
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;
    ~StandIn() { ::SetEnvironmentVariableA(m_pszVariable, nullptr); }

private:
    const char* m_pszVariable;
};
