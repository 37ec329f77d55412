// Start-ups under every Windows generation: Wine reports another Windows to a program whose name is in its settings.

#include <optional>
#include <sstream>

#include <gtest/gtest.h>

#include <support/registry_scope.h>
#include <zelk_nm/tolva.h>

#include "installed.h"

using namespace testing_support;

namespace
{

constexpr const wchar_t* VERSION_KEY = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr const wchar_t* MININT_KEY = L"SYSTEM\\CurrentControlSet\\Control\\MiniNT";

struct Generation
{
    const wchar_t* pszWindows;
    const wchar_t* pszCurrentVersion;
    unsigned int workstation, server, miniNT; ///< environment codes
    bool bVista;                              ///< the back end
};
constexpr Generation GENERATIONS[] = {
    {L"winxp64", L"5.2", 4, 5, 16, false},
    {L"vista", L"6.0", 6, 7, 17, true},
    {L"win7", L"6.1", 9, 8, 18, true},
    {L"win8", L"6.2", 10, 11, 19, true},
    {L"win81", L"6.3", 12, 13, 20, true},
    {L"win10", L"6.3", 12, 13, 20, true},
    // The registry decides on the code, the system's own number on the back end of an old system.
    {L"winxp64", L"6.1", 9, 8, 18, false},
};

TEST(Generations, EnvironmentAndBackEnd)
{
    for (const bool bMiniNT : {false, true})
        for (const Generation& generation : GENERATIONS)
        {
            SCOPED_TRACE(testing::PrintToString(std::wstring(generation.pszWindows) + L' ' +
                                                generation.pszCurrentVersion + (bMiniNT ? L" MiniNT" : L"")));
            const RegistryValueScope version(VERSION_KEY, L"CurrentVersion", StringData(generation.pszCurrentVersion));
            std::optional<RegistryKeyScope> miniNT;
            if (bMiniNT)
                miniNT.emplace(MININT_KEY);
            const Installed program(L"environment_probe.exe", generation.pszWindows);

            std::istringstream answer(program.Run());
            unsigned int type = 0;
            unsigned int code = 0;
            std::string sBackEnd;
            std::getline(answer >> type >> code >> std::ws, sBackEnd);
            // Wine decides on the product type.
            const unsigned int installed = type == VER_NT_WORKSTATION ? generation.workstation : generation.server;
            EXPECT_EQ(bMiniNT ? generation.miniNT : installed, code) << answer.str();
            EXPECT_EQ(generation.bVista ? "Vista" : "before Vista", sBackEnd) << answer.str();
            EXPECT_EQ(std::vector<std::string>{std::string("[V] TOLVA::NetworkApiFactory : O/S is ") +
                                               (generation.bVista ? "Vista or later" : "prior to Vista")},
                      program.Trace());
        }
}

TEST(Generations, TheDllStartsAndAnswersAlike)
{
    velmor::string sVersion;
    TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_VERSION, sVersion);
    std::vector<TOLVA::NIC_INFO> list;
    const bool bListed = TOLVA::GetAdapterList(list);
    const std::string sExpected =
        std::string(sVersion.narrow_c_str()) + (bListed ? " 1 " : " 0 ") + std::to_string(list.size()) + " 1";
    for (const bool bMiniNT : {false, true})
        for (const wchar_t* pszWindows : {L"winxp64", L"vista", L"win7", L"win8", L"win81", L"win10"})
        {
            SCOPED_TRACE(testing::PrintToString(std::wstring(pszWindows)));
            const bool bOldMiniNT = bMiniNT && pszWindows == std::wstring(L"winxp64");
            const RegistryValueScope version(VERSION_KEY, L"CurrentVersion", StringData(bOldMiniNT ? L"5.2" : L"6.1"));
            std::optional<RegistryKeyScope> miniNT;
            if (bMiniNT)
                miniNT.emplace(MININT_KEY);
            const Installed program(L"dll_probe.exe", pszWindows);
            program.AddLibrary();
            EXPECT_EQ(sExpected, program.Run());
            const std::vector<std::string> lines = program.Trace();
            ASSERT_GE(lines.size(), 2U);
            // Only in that one environment the settings file is not the one beside the program.
            EXPECT_EQ(bOldMiniNT ? "[I] TOLVA::TOLVA : sVersion = \"" + std::string(sVersion.narrow_c_str()) + '"'
                                 : "[V] TOLVA::TOLVA : Constructor",
                      lines.front());
        }
}

} // namespace
