#include "zelkctl_test.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <support/registry_scope.h>

using testing_support::DwordData;
using testing_support::RegistryKeyScope;
using testing_support::StringData;

namespace
{

const std::wstring CONTROL = L"SYSTEM\\CurrentControlSet\\Control\\";
const std::wstring NET_CLASS = L"{4D36E972-E325-11CE-BFC1-08002BE10318}";
const std::wstring DEVICE = L"ROOT\\NET\\0042";
const std::wstring LAN_CLASS = L"{AD498944-762F-11D0-8DCB-00C04FC3358C}";

class DoctorTest : public ZelkctlTest
{
protected:
    /// The findings on one topic; those of the first adapter come first.
    std::vector<nlohmann::json> Findings(const std::string& sTopic)
    {
        std::vector<nlohmann::json> findings = nlohmann::json::parse(Run(L"doctor --json").sOut)["result"]["findings"];
        std::erase_if(findings, [&](const nlohmann::json& finding) { return finding["topic"] != sTopic; });
        return findings;
    }

    /// The GUID of the machine's first adapter; empty when it has none.
    std::wstring FirstAdapter()
    {
        const std::string sGuids = Run(L"adapter list --get guid").sOut;
        return {sGuids.begin(), std::ranges::find(sGuids, '\n')};
    }
};

TEST_F(DoctorTest, NamesTheRegistryValueThatARecordLacks)
{
    const std::wstring sGuid = FirstAdapter();
    if (sGuid.empty())
        GTEST_SKIP() << "the machine has no adapter";
    const RegistryKeyScope classKey(CONTROL + L"Class\\" + NET_CLASS + L"\\0042");
    const RegistryKeyScope connection(CONTROL + L"Network\\" + NET_CLASS + L"\\" + sGuid + L"\\Connection");
    const RegistryKeyScope lanDevice(CONTROL + L"DeviceClasses\\" + LAN_CLASS + L"\\##?#0042");
    const struct
    {
        const RegistryKeyScope& key;
        std::wstring sName;
        std::wstring sText;
        const char* pszSeverity; ///< of the finding without the value
        std::wstring sNamedKey;  ///< empty when the finding names no value
    } values[] = {{classKey, L"NetCfgInstanceId", sGuid, "wrong", CONTROL + L"Class\\" + NET_CLASS + L"\\*"},
                  {classKey, L"DriverDesc", L"Card", "wrong", classKey.Path()},
                  {classKey, L"DeviceInstanceID", DEVICE, "ok", L""}, // PnpInstanceID stands in for it
                  {connection, L"PnpInstanceID", DEVICE, "ok", L""},  // and the other way round
                  {connection, L"Name", L"lan 7", "wrong", connection.Path()},
                  {lanDevice, L"DeviceInstance", DEVICE, "note", CONTROL + L"DeviceClasses\\" + LAN_CLASS + L"\\*"}};
    for (const auto& value : values)
        value.key.Set(L"", value.sName, StringData(value.sText));
    EXPECT_EQ("ok", Findings("record").at(0)["severity"]);
    for (const auto& value : values)
    {
        SCOPED_TRACE(testing::PrintToString(value.sName));
        value.key.Set(L"", value.sName, DwordData(7)); // as good as missing
        const auto findings = Findings("record");
        const auto found = std::ranges::find(findings, value.pszSeverity, [](const nlohmann::json& finding) {
            return finding["severity"].get<std::string>();
        });
        ASSERT_NE(findings.end(), found);
        const std::filesystem::path path = L"HKLM\\" + value.sNamedKey + L"\\" + value.sName;
        EXPECT_EQ(value.sNamedKey.empty() ? nlohmann::json::array() : nlohmann::json::array({path.string()}),
                  (*found)["missing"]);
        value.key.Set(L"", value.sName, StringData(value.sText));
    }
}

TEST_F(DoctorTest, TellsThatNothingCanBeTraced)
{
    EXPECT_THAT(Run(L"doctor").sOut, testing::HasSubstr("\nok     The log directory "));
    const std::filesystem::path folder = testing_support::BesideProgram(L"Logfiles");
    std::filesystem::remove_all(folder);
    const Result result = Run(L"doctor");
    std::filesystem::create_directory(folder);
    EXPECT_EQ(1U, result.dwExitCode);
    EXPECT_THAT(result.sOut, testing::HasSubstr("\nwrong  The log directory "));
}

} // namespace
