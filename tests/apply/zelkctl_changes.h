#pragma once

#include <chrono>
#include <deque>
#include <regex>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cli/zelkctl_test.h>
#include <support/golden.h>
#include <support/registry_scope.h>

#include "two_links.h"

using namespace testing_support;
using testing::HasSubstr;
using Json = nlohmann::json;

/// Both links are installed adapters; the first one has everything.
class ZelkctlChanges : public ZelkctlTest
{
protected:
    static void SetUpTestSuite()
    {
        s_sGuid = RegisterLinks();
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

    /// What a user sees who types zelkctl's command lines, perhaps behind "user" for one who is no administrator,
    /// "older" for the tool on a Windows before Vista, or variables for the stand-ins; and what "ip" and the kernel
    /// say.
    static std::string Answer(std::string sLine)
    {
        std::deque<StandIn> standIns;
        const std::regex assignment("(ZELK_[A-Z_]+)=([^ ]+) (.*)");
        for (std::smatch found; std::regex_match(sLine, found, assignment); sLine = found.str(3))
            standIns.emplace_back(found[1], found[2]);
        std::string sOutput;
        if (sLine == "kernel")
            return Kernel();
        if (sLine.starts_with("ip "))
        {
            EXPECT_TRUE(RunUnix(sLine, sOutput));
            return sOutput;
        }
        Start start;
        start.bElevated = !sLine.starts_with("user ");
        if (sLine.starts_with("older "))
            start.pszProgram = L"zelkctl-older.exe";
        return Session(sLine.substr(sLine.find("zelkctl ")), start);
    }

    /// Without what differs from run to run.
    static void ExpectSession()
    {
        constexpr std::pair<const char*, const char*> VARYING[] = {{"[0-9]+ ms", "N ms"},
                                                                   {"[0-9a-f]{16}", "ID"},
                                                                   {"198\\.18\\.[0-9]+", "198.18.N"},
                                                                   {"Verifying[^\n]*\n", ""}};
        ExpectTranscript([&](const std::string& sLine) {
            std::string sAnswer = Answer(sLine);
            for (const auto& [pszVarying, pszShown] : VARYING)
                sAnswer = std::regex_replace(sAnswer, std::regex(pszVarying), pszShown);
            return sAnswer;
        });
    }

    /// The answer of a change that ends as expected.
    static Json Do(const std::wstring& sArguments, DWORD dwExitCode, const Start& start = {})
    {
        const Result run = Run(sArguments + L" --json --timeout 15", start);
        EXPECT_EQ(dwExitCode, run.dwExitCode) << run.sOut << run.sErr;
        const Json answer = Json::parse(run.sOut);
        return answer.contains("result") ? answer["result"] : answer["error"];
    }

    static std::wstring ConnectionKey() { return zelk::CONNECTIONS + (L'\\' + s_sGuid) + L"\\Connection"; }

    static inline std::wstring s_sGuid; ///< of the first link
    static constexpr const char* START = R"({"schemaVersion": 1, "adapters": [
        {"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.10/24"], "gateways": [{"address": "192.0.2.1", "metric": 5}],
                                     "dnsServers": ["192.0.2.53", "192.0.2.54"]},
         "ipv6": {"addresses": ["2001:db8::10/64"]}, "routes": []},
        {"adapter": "lan1", "ipv4": {"addresses": ["203.0.113.7/24"], "gateways": [], "dnsServers": "automatic"},
         "routes": []}]})";
};
