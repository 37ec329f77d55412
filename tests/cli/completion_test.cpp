#include <gmock/gmock.h>

#include <e2e/unix_command.h>

#include "installed_adapter.h"
#include "zelkctl_test.h"

using testing::HasSubstr;
using testing::Not;
using testing_support::BesideProgram;
using testing_support::WriteFileBytes;

namespace
{

class Completion : public ZelkctlTest
{
protected:
    static std::string CandidatesFor(const std::wstring& sWords) { return Run(L"__complete -- " + sWords).sOut; }
};

TEST_F(Completion, WalksCommandsOptionsAndValues)
{
    EXPECT_EQ("dhcp\ndns\ndoctor\n", CandidatesFor(L"d"));
    EXPECT_EQ("list\nset\nstatus\nreturn\nflush\nregister\n", CandidatesFor(L"dns \"\""));
    EXPECT_EQ("--operation\n", CandidatesFor(L"trace show --errors --o"));
    EXPECT_EQ("--errors\n", CandidatesFor(L"trace show --operation --json --e"));
    EXPECT_EQ("time\nthread\n", CandidatesFor(L"trace show --get t"));
    EXPECT_EQ("0\n1\n2\n3\n4\n", CandidatesFor(L"trace level \"\""));
    EXPECT_EQ("on\noff\ndhcp\n", CandidatesFor(L"settings set lan0 --netbios \"\""));
    EXPECT_EQ("powershell\n", CandidatesFor(L"completion p"));
    EXPECT_EQ("", CandidatesFor(L"nonsense \"\" x"));
    EXPECT_EQ("", Run(L"__complete").sErr);
}

TEST_F(Completion, KnowsAdapters)
{
    const InstalledAdapter adapter(L"Zelk's lan 7");
    EXPECT_EQ("Zelk's lan 7\n", CandidatesFor(L"dns set --json \"zelk's l\""));
    EXPECT_EQ("name:Zelk's lan 7\n", CandidatesFor(L"adapter show name:Z"));
    EXPECT_THAT(CandidatesFor(L"dns set lan0 \"\""), Not(HasSubstr("Zelk's")));
    EXPECT_THAT(Run(L"adapter list --all --get name").sOut, HasSubstr("Zelk's lan 7\n"));
}

TEST_F(Completion, ScriptsAskTheTool)
{
    EXPECT_THAT(Run(L"completion powershell").sOut, HasSubstr("__complete"));
    const std::filesystem::path file = BesideProgram(L"completion.bash"); // on the drive that is the Unix root
    WriteFileBytes(file,
                   Run(L"completion bash").sOut + // a function stands in for the tool
                       "zelkctl() { printf '%s\\n' \"$*\" 'Local Area'; }\n"
                       "COMP_LINE='zelkctl dns list Lo' COMP_POINT=19 COMP_WORDS=(zelkctl dns list Lo) COMP_CWORD=3\n"
                       "_zelkctl\nprintf '%s\\n' \"${COMPREPLY[@]}\"\n");
    std::string sOutput;
    ASSERT_TRUE(RunUnix("bash '" + file.generic_string().substr(2) + '\'', sOutput)) << sOutput;
    EXPECT_EQ("__complete\\ --\\ dns\\ list\\ Lo\nLocal\\ Area\n", sOutput);
}

} // namespace
