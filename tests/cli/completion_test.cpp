#include <gmock/gmock.h>

#include "installed_adapter.h"
#include "zelkctl_test.h"

using testing::HasSubstr;
using testing::Not;

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
    EXPECT_EQ("list\nset\nstatus\nreturn\n", CandidatesFor(L"dns \"\""));
    EXPECT_EQ("--operation\n", CandidatesFor(L"trace show --errors --o"));
    EXPECT_EQ("--errors\n", CandidatesFor(L"trace show --operation --json --e"));
    EXPECT_EQ("time\nthread\n", CandidatesFor(L"trace show --get t"));
    EXPECT_EQ("0\n1\n2\n3\n4\n", CandidatesFor(L"trace level \"\""));
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
    for (const wchar_t* pszShell : {L"bash", L"powershell"})
        EXPECT_THAT(Run(std::wstring(L"completion ") + pszShell).sOut, HasSubstr("__complete"));
}

} // namespace
