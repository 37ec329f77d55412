// Start-ups under every Windows generation: Wine reports another Windows to a program whose name is in its settings.

#include <functional>
#include <optional>

#include <gtest/gtest.h>

#include <support/golden.h>
#include <support/registry_scope.h>
#include <zelk_nm/tolva.h>

#include "installed.h"

using namespace testing_support;

namespace
{

constexpr const wchar_t* VERSION_KEY = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr const wchar_t* MININT_KEY = L"SYSTEM\\CurrentControlSet\\Control\\MiniNT";

/// Runs the body with what makes a MiniNT, or without.
void WithMiniNT(bool bMiniNT, const std::function<void()>& body)
{
    std::optional<RegistryKeyScope> miniNT;
    if (bMiniNT)
        miniNT.emplace(MININT_KEY);
    body();
}

/// In the golden text: product type, environment code and back end. The registry decides on the code, the system's own
/// number on the back end of an old system.
TEST(Generations, EnvironmentAndBackEnd)
{
    Golden golden;
    const std::pair<const wchar_t*, const wchar_t*> GENERATIONS[] = {
        {L"winxp64", L"5.2"}, {L"vista", L"6.0"}, {L"win7", L"6.1"},   {L"win8", L"6.2"},
        {L"win81", L"6.3"},   {L"win10", L"6.3"}, {L"winxp64", L"6.1"}};
    for (const bool bMiniNT : {false, true})
        for (const auto& [pszWindows, pszVersion] : GENERATIONS)
            WithMiniNT(bMiniNT, [&, pszWindows = pszWindows, pszVersion = pszVersion] {
                const RegistryValueScope version(VERSION_KEY, L"CurrentVersion", StringData(pszVersion));
                const Installed program(L"environment_probe.exe", pszWindows);
                golden.Line("==", pszWindows, pszVersion, bMiniNT ? "MiniNT" : "", program.Run());
                golden.Lines(program.Trace());
            });
}

TEST(Generations, TheDllStartsAndAnswersAlike)
{
    velmor::string sVersion;
    TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_VERSION, sVersion);
    std::vector<TOLVA::NIC_INFO> list;
    const bool bListed = TOLVA::GetAdapterList(list);
    const std::string sExpected = Show(sVersion, bListed ? 1 : 0, list.size(), 1);
    for (const bool bMiniNT : {false, true})
        for (const wchar_t* pszWindows : {L"winxp64", L"vista", L"win7", L"win8", L"win81", L"win10"})
            WithMiniNT(bMiniNT, [&] {
                SCOPED_TRACE(Show(pszWindows));
                const bool bOld = bMiniNT && pszWindows == std::wstring(L"winxp64");
                const RegistryValueScope version(VERSION_KEY, L"CurrentVersion", StringData(bOld ? L"5.2" : L"6.1"));
                const Installed program(L"dll_probe.exe", pszWindows);
                program.AddLibrary();
                EXPECT_EQ(sExpected, program.Run());
                const std::vector<std::string> lines = program.Trace();
                ASSERT_GE(lines.size(), 2U);
                // Only in that one environment the settings file is not the one beside the program.
                EXPECT_EQ(bOld ? "[I] TOLVA::TOLVA : sVersion = \"" + Show(sVersion) + '"'
                               : "[V] TOLVA::TOLVA : Constructor",
                          lines.front());
            });
}

} // namespace
