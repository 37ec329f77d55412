#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include <support/files.h>
#include <zelk_nm/tolva.h>

namespace
{

template <class Print>
std::string Printed(Print&& print)
{
    const testing_support::TempDirectory folder;
    {
        std::wofstream ofs(folder / L"print.txt");
        ofs << L'<';
        print(ofs);
        ofs << L'>';
        EXPECT_TRUE(ofs.good());
    }
    return testing_support::ReadFileBytes(folder / L"print.txt");
}

TEST(Printers, AdapterStatus)
{
    const char* const WORDS[] = {"<Unknown : 0>", "<Up>",      "<Down>",        "<Testing>",
                                 "<Unknown>",     "<Dormant>", "<Not Present>", "<Lower-Layer Down>",
                                 "<Unknown : 8>"};
    for (unsigned int i = 0; i < std::size(WORDS); ++i)
        EXPECT_EQ(WORDS[i], Printed([&](std::wofstream& ofs) {
                      TOLVA::PrintAdapterStatus(ofs, static_cast<TOLVA::TOLVA_OPER_STATUS>(i));
                  }));
}

TEST(Printers, DadState)
{
    const char* const WORDS[] = {"<Invalid>",    "<Tentative>", "<Duplicate>",
                                 "<Deprecated>", "<Preferred>", "<Unknown : 5>"};
    for (unsigned int i = 0; i < std::size(WORDS); ++i)
        EXPECT_EQ(WORDS[i],
                  Printed([&](std::wofstream& ofs) { TOLVA::PrintDadState(ofs, static_cast<NL_DAD_STATE>(i)); }));
}

TEST(Printers, ScopeId)
{
    const std::pair<ULONG, const char*> rows[] = {{0x00000000, "<Zone = Default, Level = n/a>"},
                                                  {0x10000001, "<Zone = 1, Level = Interface>"},
                                                  {0x2FFFFFFF, "<Zone = 268435455, Level = Link>"},
                                                  {0x30000000, "<Zone = Default, Level = Subnet>"},
                                                  {0x4000000B, "<Zone = 11, Level = Admin>"},
                                                  {0x50000000, "<Zone = Default, Level = Site>"},
                                                  {0x60000000, "<Zone = Default, Level = Unknown : 6>"},
                                                  {0x80000000, "<Zone = Default, Level = Organisation>"},
                                                  {0xE0000000, "<Zone = Default, Level = Global>"},
                                                  {0xFFFFFFFF, "<Zone = 268435455, Level = Unknown : 15>"}};
    for (const auto& [value, pszText] : rows)
    {
        SCOPE_ID scope;
        scope.Value = value;
        EXPECT_EQ(pszText, Printed([&](std::wofstream& ofs) { TOLVA::PrintScopeId(ofs, scope); }));
    }
}

} // namespace
