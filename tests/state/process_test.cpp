// Commands of the system: how they are told their arguments, and how one that does not end is ended.

#include <cstdlib>

#include <gtest/gtest.h>

#include <state/apply/command_limit.h>
#include <state/apply/command_line.h>
#include <state/apply/process.h>
#include <support/files.h>

#include <windows.h>

#include <shellapi.h>

using namespace zelk;

namespace
{

TEST(CommandLine, IsReadBackByTheSystem)
{
    const std::vector<std::wstring> arguments = {L"plain",  L"",          L"two words",    L"a\"b",
                                                 L"\\",     L"end \\",    L"\\\\\"\\",     L"%PATH%",
                                                 L"a&b|c>", L"tab\there", L"trailing\\\\", L"^caret"};
    int count = 0;
    wchar_t** const read = ::CommandLineToArgvW(MakeCommandLine(L"C:\\a b\\x.exe", arguments).c_str(), &count);
    ASSERT_EQ(static_cast<int>(arguments.size()) + 1, count);
    EXPECT_STREQ(L"C:\\a b\\x.exe", read[0]);
    for (std::size_t i = 0; i < arguments.size(); ++i)
        EXPECT_EQ(arguments[i], read[i + 1]);
    ::LocalFree(read);
}

TEST(Process, TellsExitCodeAndOutput)
{
    const auto never = [] { return false; };
    const auto done = RunSystemProgram(L"cmd.exe", {L"/c", L"echo text& exit 3"}, std::chrono::seconds(30), never);
    EXPECT_EQ(3u, done.exitCode);
    EXPECT_EQ("text\r\n", done.output);
    const auto missing = RunSystemProgram(L"no-such-command.exe", {}, std::chrono::seconds(30), never);
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, missing.error);
    EXPECT_FALSE(missing.exitCode);
}

TEST(Process, IsTakenFromTheSystemAlone)
{
    const testing_support::TempDirectory planted;
    testing_support::WriteFileBytes(planted / L"cmd.exe", "no program");
    const std::filesystem::path before = std::filesystem::current_path();
    const std::wstring path = ::_wgetenv(L"PATH");
    std::filesystem::current_path(planted.Path());
    ::SetEnvironmentVariableW(L"PATH", (planted.Text() + L';' + path).c_str());
    const auto run = RunSystemProgram(L"cmd.exe", {L"/c", L"exit 3"}, std::chrono::seconds(30), [] { return false; });
    ::SetEnvironmentVariableW(L"PATH", path.c_str());
    std::filesystem::current_path(before);
    EXPECT_EQ(3u, run.exitCode);
}

TEST(Process, IsEndedWhenTimeIsOverOrOnDemand)
{
    const std::vector<std::wstring> endless = {L"/c", L"for /L %i in (1,0,2) do @echo endless"};
    const auto late = RunSystemProgram(L"cmd.exe", endless, std::chrono::milliseconds(300), [] { return false; });
    EXPECT_TRUE(late.timedOut);
    EXPECT_FALSE(late.exitCode);
    EXPECT_LE(late.output.size(), 65536u);
    const auto stopped = RunSystemProgram(L"cmd.exe", endless, std::chrono::seconds(60), [] { return true; });
    EXPECT_TRUE(stopped.cancelled);
}

TEST(CommandLimit, EndsWhatAnOperationWaitsFor)
{
    for (const bool cancelled : {false, true})
    {
        const CommandLimit limit(cancelled ? std::chrono::hours(1) : std::chrono::milliseconds(300),
                                 [&] { return cancelled; });
        EXPECT_EQ(ERROR_TIMEOUT, ::_wsystem(L"for /L %i in (1,0,2) do @echo endless >nul"));
        EXPECT_NE(cancelled, limit.IsOver());
    }
}

} // namespace
