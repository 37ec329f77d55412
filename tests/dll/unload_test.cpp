// The library on every Windows: it answers alike, what it has loaded goes with it, and the trace is the last to go.

#include <gtest/gtest.h>

#include <support/golden.h>
#include <support/registry_scope.h>
#include <zelk_nm/tolva.h>

#include "installed.h"

using namespace testing_support;

namespace
{

/// In the golden text: what the probe answers and the last lines of the trace. The last to be loaded is the first to
/// go.
TEST(Unloading, LeavesNothingBehindAndTracesToTheEnd)
{
    constexpr std::ptrdiff_t LAST = 4;
    const std::wstring NO_DEVMGR;
    // With a name of its connection the adapter's address is changed by a command.
    const RegistryKeyScope connection(L"SYSTEM\\CurrentControlSet\\Control\\Network\\"
                                      L"{4D36E972-E325-11CE-BFC1-08002BE10318}\\{UNLOAD}\\Connection");
    connection.Set(L"", L"Name", StringData(L"no such connection"));
    velmor::string sVersion;
    TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_VERSION, sVersion);
    std::vector<TOLVA::NIC_INFO> list;
    TOLVA::GetAdapterList(list);
    const std::string sListed = Show(sVersion, "lists", list.size(), ""); // on every Windows
    Golden golden;
    for (const auto& [pszWindows, sDevmgr] : {std::pair(L"win7", std::wstring(L"devmgr_with_sheet.dll")),
                                              {L"win7", L"devmgr_without_sheet.dll"},
                                              {L"win7", NO_DEVMGR},
                                              {L"winxp64", L"devmgr_with_sheet.dll"},
                                              {L"winxp64", NO_DEVMGR},
                                              {L"vista", NO_DEVMGR},
                                              {L"win8", NO_DEVMGR},
                                              {L"win81", NO_DEVMGR},
                                              {L"win10", NO_DEVMGR}})
    {
        const Installed program(L"unload_probe.exe", pszWindows);
        program.AddLibrary();
        const std::filesystem::path probes = BesideProgram(L"probe");
        std::filesystem::copy_file(probes / L"library_user.dll", program.Folder() / L"library_user.dll");
        if (!sDevmgr.empty())
            std::filesystem::copy_file(probes / sDevmgr, program.Folder() / L"DEVMGR.DLL");
        const std::string sAnswer = program.Run();
        ASSERT_TRUE(sAnswer.starts_with(sListed)) << sAnswer;
        golden.Line("==", pszWindows, sDevmgr, sAnswer.substr(sListed.size()));
        const std::vector<std::string> lines = program.Trace();
        ASSERT_LE(LAST, std::ssize(lines));
        golden.Lines({lines.end() - LAST, lines.end()});
    }
}

} // namespace
