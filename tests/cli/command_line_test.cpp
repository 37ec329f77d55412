#include <gmock/gmock.h>

#include "zelkctl_test.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{

using CommandLine = ZelkctlTest;

TEST_F(CommandLine, ExplainsWhatIsWrongWithIt)
{
    const struct
    {
        const wchar_t* pszArguments;
        const char* pszReason;
        const char* pszHint;
    } rows[] = {
        {L"adapter lst lan0", "\"lst\" is not a verb of \"zelkctl adapter\"",
         "Did you mean \"list\"? The verbs are list,"},
        {L"adaptr list", "\"adaptr\" is not a command", "Did you mean \"adapter\"?"},
        {L"LIST", "\"LIST\" is not a command", "The commands are show,"},
        {L"help adapter lst", "\"lst\" is not a verb of \"zelkctl adapter\"", "Did you mean \"list\"?"},
        {L"adapter", "\"zelkctl adapter\" needs a verb", "The verbs are list,"},
        {L"adapter list --jsn", "has no option \"--jsn\"", "Did you mean \"--json\"?"},
        {L"dns list lan0 lan1", "\"lan1\" is one argument too many", "--help"},
        {L"dns list", "ADAPTER is required", "zelkctl dns list --help"},
        {L"adapter list --get guidd", "did you mean \"guid\"?", "--help"},
        {L"adapter list --fields name,stats", "did you mean \"status\"?", "--help"},
        {L"address set lan0 192.0.2.1/33", "\"33\" is not a prefix length of an IPv4 address, which is 0 to 32",
         "--help"},
        {L"address set lan0 192.0.2.1", "needs a prefix length", "--help"},
        {L"dns set lan0 192.0.2.1 192.0.2.1", "given twice", "--help"},
        {L"route add lan0 10.0.0.0/8 2001:db8::1", "same family", "--help"},
        {L"identity set-name \"two words\"", "Computer name: must be 1 to 63 letters", ""},
        {L"settings set lan0 --netbios maybe", "\"maybe\" is not a value", "--help"},
        {L"watch lan0 --until ipv4.adresses=192.0.2.1/24", "did you mean \"ipv4.addresses\"?", "--help"},
        {L"watch lan0 --until status", "not of the form FIELD=VALUE", "--help"},
        {L"watch lan0 --until status=Up", "\"Up\" is not a value that \"status\" can have", "--help"},
        {L"watch --until status=up", "needs an ADAPTER", "--help"},
        {L"watch lan0 --timeout 3", "needs --until", "--help"},
        {L"dns return lan0 --timeout 0", "\"0\" is not a number of seconds", "--help"},
    };
    for (const auto& row : rows)
    {
        const Result result = Run(row.pszArguments);
        EXPECT_EQ(2U, result.dwExitCode);
        EXPECT_THAT(result.sErr, AllOf(HasSubstr(row.pszReason), HasSubstr(row.pszHint)));
    }
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
