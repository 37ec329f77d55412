#include <fstream>

#include "zelkctl_test.h"

#include <gmock/gmock.h>

using namespace testing_support;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{

std::string LineOf(char level, const std::string& sText)
{
    return std::string("[2026-11-21 09:13:25.204]:00d0:[") + level + "]: " + sText + "\r\n";
}

/// As the library writes: under its mutex. A file that is deleted while somebody reads it cannot be made again at once.
class Turn
{
public:
    Turn() : m_hMutex(::CreateMutexW(nullptr, FALSE, L"TOLVA_trace.log")) { ::WaitForSingleObject(m_hMutex, INFINITE); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn()
    {
        ::ReleaseMutex(m_hMutex);
        ::CloseHandle(m_hMutex);
    }

private:
    HANDLE m_hMutex;
};

/// Another program's directory, with a trace that the tests write.
class Trace : public ZelkctlTest
{
protected:
    Trace() { std::filesystem::create_directory(program / L"Logfiles"); }

    [[nodiscard]] std::filesystem::path File() const { return program / L"Logfiles" / L"TOLVA_trace.log"; }
    [[nodiscard]] std::filesystem::path Rotated() const { return program / L"Logfiles" / L"TOLVA_trace.old"; }
    void Append(const std::string& sText) const
    {
        const Turn turn;
        std::ofstream(File(), std::ios::binary | std::ios::app) << sText;
    }
    void Empty() const
    {
        const Turn turn;
        WriteFileBytes(File(), "");
    }
    void Rotate() const
    {
        const Turn turn;
        ASSERT_TRUE(::CopyFileW(File().c_str(), Rotated().c_str(), FALSE));
        ASSERT_TRUE(::DeleteFileW(File().c_str()));
    }
    [[nodiscard]] std::wstring Arguments(const std::wstring& sVerb) const
    {
        return L"trace " + sVerb + L" --program \"" + program.Text() + L"\"";
    }
    [[nodiscard]] Result RunTrace(const std::wstring& sVerb) const { return Run(Arguments(sVerb)); }

    TempDirectory program;
};

TEST_F(Trace, ShowsBothFilesInColumnsWithTheirDumps)
{
    WriteFileBytes(Rotated(), LineOf('E', "TOLVA::Old : ... ending( Bad )"));
    Append(LineOf('V', "TOLVA::Longer : abData = \r\n01 02 \r\n03 04 \r\n") + LineOf('I', "TOLVA::New : done"));
    const auto result = RunTrace(L"show");
    EXPECT_EQ(0U, result.dwExitCode) << result.sErr;
    EXPECT_EQ("Time                     Level        Operation      Message\n"
              "2026-11-21 09:13:25.204  Error        TOLVA::Old     ... ending( Bad )\n"
              "2026-11-21 09:13:25.204  Verbose      TOLVA::Longer  abData =\n"
              "                                                     01 02 \n"
              "                                                     03 04 \n"
              "2026-11-21 09:13:25.204  Information  TOLVA::New     done\n",
              result.sOut);
    EXPECT_EQ("... ending( Bad )\nabData = 01 02 03 04 \ndone\n", RunTrace(L"show --get message").sOut);
}

TEST_F(Trace, FiltersLinesWithWhatBelongsToThem)
{
    Append(LineOf('W', "TOLVA::GetDhcpStatus : late") + "row\r\n" + LineOf('I', "TOLVA::GetDhcpStatus : fine") +
           "row\r\n" + LineOf('E', "TOLVA::AddRoute : bad"));
    EXPECT_EQ("late row\nbad\n", RunTrace(L"show --errors --get message").sOut);
    EXPECT_EQ("late row\nfine row\n", RunTrace(L"show --operation dhcp --get message").sOut);
    EXPECT_EQ("late row\n", RunTrace(L"show --errors --operation dhcp --get message").sOut);
    EXPECT_THAT(RunTrace(L"show --operation nothing --json").sOut, HasSubstr("\"result\": []"));
}

TEST_F(Trace, FollowsThroughRotationAndEmptyingLosingAndRepeatingNothing)
{
    WriteFileBytes(Rotated(), LineOf('I', "Op : 1"));
    Append(LineOf('I', "Op : 2"));
    Zelkctl follower(Arguments(L"show --follow --get message"));
    EXPECT_EQ("1\n2\n", follower.ReadUntil("2\n"));
    Append(LineOf('I', "Op : 3"));
    EXPECT_EQ("3\n", follower.ReadUntil("3\n"));
    Append(LineOf('I', "Op : 4"));
    Rotate();
    Append(LineOf('I', "Op : 5"));
    EXPECT_EQ("4\n5\n", follower.ReadUntil("5\n"));
    Empty();
    Append(LineOf('I', "Op : 6"));
    EXPECT_EQ("6\n", follower.ReadUntil("6\n"));
    Rotate();
    Append(LineOf('I', "Op : 7"));
    EXPECT_EQ("7\n", follower.ReadUntil("7\n"));
    follower.Terminate();
    EXPECT_EQ("", follower.ReadToEnd());
}

TEST_F(Trace, FollowedAsJsonIsAnObjectALine)
{
    Zelkctl follower(Arguments(L"show --follow --json"));
    Append(LineOf('E', "Op : text"));
    EXPECT_EQ(R"({"time":"2026-11-21 09:13:25.204","level":"Error","operation":"Op","message":"text","thread":208})"
              "\n",
              follower.ReadUntil("\n"));
    follower.Terminate();
}

TEST_F(Trace, DirectoryIsThatOfItsSettings)
{
    EXPECT_EQ(0U, RunTrace(L"show").dwExitCode) << "a missing file is an empty trace";
    EXPECT_EQ("", RunTrace(L"show").sOut);
    const TempDirectory logs;
    WriteFileBytes(program / L"zlk.ini", "[File Locations]\r\nLogfiles=" + logs.Path().string() + "\r\n");
    WriteFileBytes(logs / L"TOLVA_trace.log", LineOf('I', "Op : elsewhere"));
    EXPECT_EQ("elsewhere\n", RunTrace(L"show --get message").sOut);
    EXPECT_EQ("elsewhere\n", Run(L"trace show --get message --program \"" + program.Text() + L"\\PROGRAM.EXE\"").sOut);
    EXPECT_EQ("true\ntrue\nfalse\nfalse\ntrue\n", RunTrace(L"path --get exists").sOut);

    std::filesystem::remove_all(logs.Path());
    const auto missing = RunTrace(L"show");
    EXPECT_EQ(1U, missing.dwExitCode);
    EXPECT_THAT(missing.sErr, HasSubstr(logs.Path().string() + " is missing"));
}

TEST_F(Trace, LevelIsReadWrittenAndChecked)
{
    EXPECT_EQ("3\n", RunTrace(L"level --get level").sOut) << "the default";
    EXPECT_EQ(10U, RunTrace(L"level 4 --check").dwExitCode);
    EXPECT_FALSE(std::filesystem::exists(program / L"trace.ini"));
    WriteFileBytes(program / L"trace.ini", "[Main]\r\nTOLVA_TraceLevel=9\r\nOther=kept\r\n");
    EXPECT_EQ("true\n", RunTrace(L"level --get isDefault").sOut) << "no such level";

    const auto set = RunTrace(L"level 4");
    EXPECT_EQ(0U, set.dwExitCode) << set.sErr;
    EXPECT_EQ("[Main]\r\nTOLVA_TraceLevel=4\r\nOther=kept\r\n", ReadFileBytes(program / L"trace.ini"));
    EXPECT_EQ("Verbose\n", RunTrace(L"level --get name").sOut);
    EXPECT_EQ(0U, RunTrace(L"level 4 --check").dwExitCode);
    EXPECT_EQ(2U, RunTrace(L"level 5").dwExitCode);
}

TEST_F(Trace, LookingAtTheToolsOwnTraceDoesNotEmptyIt)
{
    const IniFile settings(BesideProgram(L"trace.ini"), "[Main]\r\nTOLVA_TraceLevel=4\r\n");
    EXPECT_EQ(0U, Run(L"tcp6 list").dwExitCode);
    const std::string sTrace = Run(L"trace show").sOut;
    EXPECT_THAT(sTrace, HasSubstr("TOLVA::GetTcp6Table"));
    EXPECT_EQ("4\n", Run(L"trace level --get level").sOut);
    EXPECT_EQ("adapter\n", Run(L"__complete -- ada").sOut);
    EXPECT_EQ(sTrace, Run(L"trace show").sOut);
}

} // namespace
