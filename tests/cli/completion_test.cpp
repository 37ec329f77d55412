#include <gmock/gmock.h>

#include <e2e/network.h>
#include <e2e/unix_command.h>
#include <support/golden.h>

#include "zelkctl_test.h"

using testing::HasSubstr;
using testing::Not;
using testing_support::BesideProgram;
using testing_support::RegistryData;
using testing_support::StringData;
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
    testing_support::ExpectTranscript([](const std::string& sCommand) { return Session(sCommand); });
}

TEST_F(Completion, KnowsAdapters)
{
    const RegistryData device = StringData(L"ROOT\\NET\\0777"); // does not run
    const Seeded adapter({777, "Zelk's lan 7", "", GuidOf(777)}, device, device);
    EXPECT_EQ("Connection Zelk's lan 7\n", CandidatesFor(L"dns set --json \"connection zelk's l\""));
    EXPECT_EQ("name:Connection Zelk's lan 7\n", CandidatesFor(L"adapter show name:C"));
    EXPECT_THAT(CandidatesFor(L"dns set lan0 \"\""), Not(HasSubstr("Zelk's")));
    EXPECT_THAT(Run(L"adapter list --all --get name").sOut, HasSubstr("Connection Zelk's lan 7\n"));
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
