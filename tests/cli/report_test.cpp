#include <algorithm>
#include <regex>

#include "zelkctl_test.h"

#include <gmock/gmock.h>

#include <support/golden.h>

using namespace testing_support;
using testing::HasSubstr;

namespace
{

constexpr const char* READING = R"({"environment": {}, "identity": {"computerName": "HOST"}, "adapters": []})";

class Report : public ZelkctlTest
{
protected:
    Result Make(const std::wstring& sArguments) { return Run(L"report \"" + Page().wstring() + L"\" " + sArguments); }
    std::wstring Written(const std::wstring& sName, std::string_view content) const
    {
        WriteFileBytes(folder / sName, content);
        return L"\"" + (folder / sName).wstring() + L"\"";
    }
    [[nodiscard]] std::filesystem::path Page() const { return folder / L"page.html"; }
    [[nodiscard]] std::ptrdiff_t FilesInFolder() const
    {
        return std::distance(std::filesystem::directory_iterator(folder.Path()), {});
    }

    TempDirectory folder;
};

TEST_F(Report, RefusesWhatIsNoReadingAndTellsWhere)
{
    const std::wstring sGood = Written(L"good.json", READING);
    ASSERT_EQ(0U, Make(sGood).dwExitCode);
    const std::string sBefore = ReadFileBytes(Page());
    ExpectTranscript([&](const std::string& sQuestion) {
        std::string sText = std::regex_replace(sQuestion, std::regex("\\\\n"), "\n");
        if (sText.ends_with("..."))
            sText.replace(sText.size() - 3, 3, std::string(99999, '['));
        const Result result = Make(sGood + L' ' + Written(L"bad.json", sText));
        EXPECT_EQ(2U, result.dwExitCode);
        EXPECT_EQ(sBefore, ReadFileBytes(Page()));
        EXPECT_EQ(3, FilesInFolder());
        return result.sErr.substr(std::min(result.sErr.find("bad.json"), result.sErr.size()));
    });
}

TEST_F(Report, ReplacesPagesAndOtherFilesOnlyByForce)
{
    const std::wstring sReading = Written(L"reading.json", READING);
    const auto other = Run(L"report " + sReading + L" " + sReading);
    EXPECT_EQ(2U, other.dwExitCode);
    EXPECT_THAT(other.sErr, HasSubstr("exists and is not a page of this tool; nothing was written"));
    EXPECT_EQ(READING, ReadFileBytes(folder / L"reading.json"));
    EXPECT_EQ(0U, Make(sReading + L" --force").dwExitCode);
    EXPECT_EQ(0U, Make(sReading).dwExitCode);
    EXPECT_EQ(2U, Make(sReading + L" --desired " + sReading).dwExitCode) << "that is about this machine";
    std::filesystem::remove(Page());
    std::filesystem::create_directory(Page());
    EXPECT_EQ(1U, Make(sReading + L" --force").dwExitCode);
    EXPECT_EQ(2, FilesInFolder()) << "what could not be moved is gone";
}

TEST_F(Report, TakesUtf16AndFailuresAndTheTraceOfAProgram)
{
    std::string sUtf16 = "\xFF\xFE";
    for (const char c : std::string_view(READING))
        sUtf16 += {c, '\0'};
    const std::string sFailure = R"({"command": "show", "error": {"reason": "<it> failed"}})";
    Written(L"b.json", sFailure);
    Written(L"a.json", sUtf16);
    std::filesystem::create_directory(folder / L"c.json");
    const auto many = Make(L"\"" + (folder / L"?.json").wstring() + L"\"");
    EXPECT_EQ("\"" + Page().string() + "\" was written: 2 machines.\n", many.sErr);
    EXPECT_THAT(ReadFileBytes(Page()), HasSubstr(R"("machines":[{"machine":"HOST","reading":{)"));
    EXPECT_THAT(ReadFileBytes(Page()), HasSubstr(R"({"machine":"b","error":"\u003cit\u003e failed"})"));
    EXPECT_THAT(Make(L"none*.json").sErr, HasSubstr("READING: there is no file \"none*.json\""));

    std::filesystem::create_directory(folder / L"Logfiles");
    WriteFileBytes(folder / L"Logfiles" / L"TOLVA_trace.log",
                   "[2026-11-21 09:13:25.204]:00d0:[E]: TOLVA::Old : ... ending( Bad & worse )\r\n");
    EXPECT_EQ(0U, Make(L"--program \"" + folder.Text() + L"\"").dwExitCode);
    EXPECT_THAT(ReadFileBytes(Page()), HasSubstr(R"("trace":[{"time":"2026-11-21 09:13:25.204","level":"Error")"));
    EXPECT_THAT(ReadFileBytes(Page()), HasSubstr(R"(ending( Bad \u0026 worse ))"));
}

} // namespace
