#include <fstream>

#include <gtest/gtest.h>

#include <support/files.h>
#include <support/golden.h>
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

TEST(Printers, EveryValue)
{
    testing_support::Golden golden;
    for (unsigned int i = 0; i <= 8; ++i)
        golden.Line("status", i, Printed(&TOLVA::PrintAdapterStatus, static_cast<TOLVA::TOLVA_OPER_STATUS>(i)));
    for (unsigned int i = 0; i <= 5; ++i)
        golden.Line("DAD state", i, Printed(&TOLVA::PrintDadState, static_cast<NL_DAD_STATE>(i)));
    for (const ULONG ulValue : {0x00000000UL, 0x10000001UL, 0x2FFFFFFFUL, 0x30000000UL, 0x4000000BUL, 0x50000000UL,
                                0x60000000UL, 0x80000000UL, 0xE0000000UL, 0xFFFFFFFFUL})
        golden.Line("scope", ulValue, Printed(&TOLVA::PrintScopeId, SCOPE_ID{.Value = ulValue}));
}

} // namespace
