// Start-ups under every Windows generation: Wine reports another Windows to a program whose name is in its settings.

#include <gtest/gtest.h>

#include <support/golden.h>
#include <support/registry_scope.h>

#include "installed.h"

using namespace testing_support;

namespace
{

constexpr const wchar_t* VERSION_KEY = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr const wchar_t* MININT_KEY = L"SYSTEM\\CurrentControlSet\\Control\\MiniNT";

/// In the golden text: product type, environment code and back end. The registry decides on the code, the system's own
/// number on the back end of an old system.
TEST(Generations, EnvironmentAndBackEnd)
{
    Golden golden;
    const std::pair<const wchar_t*, const wchar_t*> GENERATIONS[] = {
        {L"winxp64", L"5.2"}, {L"vista", L"6.0"}, {L"win7", L"6.1"},   {L"win8", L"6.2"},
        {L"win81", L"6.3"},   {L"win10", L"6.3"}, {L"winxp64", L"6.1"}};
    for (const wchar_t* pszKey : {VERSION_KEY, MININT_KEY})
        for (const auto& [pszWindows, pszVersion] : GENERATIONS)
        {
            const RegistryKeyScope key(pszKey);
            const RegistryValueScope version(VERSION_KEY, L"CurrentVersion", StringData(pszVersion));
            const Installed program(L"environment_probe.exe", pszWindows);
            golden.Line("==", pszWindows, pszVersion, pszKey == MININT_KEY ? "MiniNT" : "", program.Run());
            golden.Lines(program.Trace());
        }
}

} // namespace
