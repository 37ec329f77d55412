#include <fstream>

#include <gtest/gtest.h>

#include <support/files.h>
#include <zelk_nm/tolva.h>

namespace
{

template <class Value>
std::string Printed(void (*pPrint)(std::wofstream&, Value), std::remove_cvref_t<Value> value)
{
    const testing_support::TempDirectory folder;
    {
        std::wofstream ofs(folder / L"print.txt");
        pPrint(ofs, value);
        EXPECT_TRUE(ofs.good());
    }
    return testing_support::ReadFileBytes(folder / L"print.txt");
}

TEST(Printers, StatusAndDadState)
{
    const char* const STATES[] = {
        "Unknown : 0", "Up", "Down", "Testing", "Unknown", "Dormant", "Not Present", "Lower-Layer Down", "Unknown : 8"};
    for (unsigned int i = 0; i < std::size(STATES); ++i)
        EXPECT_EQ(STATES[i], Printed(&TOLVA::PrintAdapterStatus, static_cast<TOLVA::TOLVA_OPER_STATUS>(i)));
    const char* const DAD_STATES[] = {"Invalid", "Tentative", "Duplicate", "Deprecated", "Preferred", "Unknown : 5"};
    for (unsigned int i = 0; i < std::size(DAD_STATES); ++i)
        EXPECT_EQ(DAD_STATES[i], Printed(&TOLVA::PrintDadState, static_cast<NL_DAD_STATE>(i)));
}

TEST(Printers, ScopeId)
{
    const std::pair<ULONG, const char*> rows[] = {{0x00000000, "Zone = Default, Level = n/a"},
                                                  {0x10000001, "Zone = 1, Level = Interface"},
                                                  {0x2FFFFFFF, "Zone = 268435455, Level = Link"},
                                                  {0x30000000, "Zone = Default, Level = Subnet"},
                                                  {0x4000000B, "Zone = 11, Level = Admin"},
                                                  {0x50000000, "Zone = Default, Level = Site"},
                                                  {0x60000000, "Zone = Default, Level = Unknown : 6"},
                                                  {0x80000000, "Zone = Default, Level = Organisation"},
                                                  {0xE0000000, "Zone = Default, Level = Global"},
                                                  {0xFFFFFFFF, "Zone = 268435455, Level = Unknown : 15"}};
    for (const auto& [value, pszText] : rows)
        EXPECT_EQ(pszText, Printed(&TOLVA::PrintScopeId, SCOPE_ID{.Value = value}));
}

} // namespace
