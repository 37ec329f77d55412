#include <fstream>
#include <memory>
#include <regex>

#include "zelkctl_test.h"

#include <gmock/gmock.h>

#include <support/golden.h>

using namespace testing_support;
using testing::HasSubstr;

namespace
{

std::string LineOf(char level, const std::string& sText)
{
    return std::string("[2026-11-21 09:13:25.204]:00d0:[") + level + "]: " + sText + "\r\n";
}

std::string Replaced(std::string sText, const std::string& sOld, const std::string& sNew)
{
    for (std::size_t at = 0; (at = sText.find(sOld, at)) != std::string::npos; at += sNew.size())
        sText.replace(at, sOld.size(), sNew);
    return sText;
}

/// As the library writes: under its mutex. A file that is deleted while somebody reads it cannot be made again at once.
std::shared_ptr<void> TakeTurn()
{
    const HANDLE hMutex = ::CreateMutexW(nullptr, FALSE, L"TOLVA_trace.log");
    ::WaitForSingleObject(hMutex, INFINITE);
    return {hMutex, [](HANDLE hTaken) { ::ReleaseMutex(hTaken), ::CloseHandle(hTaken); }};
}

/// Another program's directory, with a trace that the tests write.
class Trace : public ZelkctlTest
{
protected:
    Trace() { std::filesystem::create_directory(program / L"Logfiles"); }

    [[nodiscard]] std::filesystem::path File() const { return program / L"Logfiles" / L"TOLVA_trace.log"; }
    [[nodiscard]] std::filesystem::path Rotated() const { return program / L"Logfiles" / L"TOLVA_trace.old"; }
    void Append(const std::string& sText) const
    {
        const auto turn = TakeTurn();
        std::ofstream(File(), std::ios::binary | std::ios::app) << sText;
    }
    void Empty() const
    {
        const auto turn = TakeTurn();
        WriteFileBytes(File(), "");
    }
    void Rotate() const
    {
        const auto turn = TakeTurn();
        ASSERT_TRUE(::CopyFileW(File().c_str(), Rotated().c_str(), FALSE));
        ASSERT_TRUE(::DeleteFileW(File().c_str()));
    }
    [[nodiscard]] std::wstring Arguments(const std::wstring& sVerb) const
    {
        return L"trace " + sVerb + L" --program \"" + program.Text() + L"\"";
    }

    TempDirectory program;
};

/// Questions are command lines of the tool, "write NAME TEXT" and "read NAME". There "PROGRAM" is the program's folder,
/// and a line of its trace begins with the level.
TEST_F(Trace, IsWhatTheFilesOfAProgramHold)
{
    const std::string sFolder = program.Path().string();
    ExpectTranscript([&](const std::string& sQuestion) {
        const std::string sMeant = Replaced(sQuestion, "PROGRAM", sFolder);
        std::smatch file;
        if (!std::regex_match(sMeant, file, std::regex("(read|write) (\\S+) ?(.*)")))
            return Replaced(Session(sMeant), sFolder, "PROGRAM");
        const std::filesystem::path path = program.Path() / file.str(2);
        if (file[1] == "read")
            return Replaced(ReadFileBytes(path), "\r\n", "\\r\\n");
        std::filesystem::create_directories(path.parent_path());
        const std::string sText = Replaced(file[3], "\\r\\n", "\r\n");
        WriteFileBytes(path,
                       std::regex_replace(sText, std::regex("\\[(\\w)\\]"), "[2026-11-21 09:13:25.204]:00d0:[$1]"));
        return std::string();
    });
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
