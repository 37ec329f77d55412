#include <gmock/gmock.h>

#include <support/golden.h>

#include "zelkctl_test.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace
{

using CommandLine = ZelkctlTest;

TEST_F(CommandLine, ExplainsWhatIsWrongWithIt)
{
    testing_support::ExpectTranscript([](const std::string& sCommand) { return Session(sCommand); });
}

TEST_F(CommandLine, KnowsSeveralWordsForHelpAndVersion)
{
    const std::string sHelp = Run(L"adapter list --help").sOut;
    EXPECT_THAT(sHelp, HasSubstr("Usage: zelkctl adapter list "));
    EXPECT_EQ(sHelp, Run(L"help adapter list").sOut);
    EXPECT_EQ(sHelp, Run(L"adapter list /?").sOut);
    EXPECT_EQ(Run(L"--help").sOut, Run(L"help").sOut);
    EXPECT_THAT(Run(L"version").sOut, StartsWith("ZELK_NM.DLL "));
    EXPECT_EQ(Run(L"version").sOut, Run(L"-V").sOut);
}

} // namespace
