// Unloading the library: what it has loaded goes with it, and the trace is the last of it to go.

#include <gtest/gtest.h>

#include <support/registry_scope.h>

#include "installed.h"

using namespace testing_support;

namespace
{

TEST(Unloading, LeavesNothingBehindAndTracesToTheEnd)
{
    const std::string SHEET = "1 /DeviceId PCI\\VEN 8086&DEV_1\\\"3";
    const std::string NO_SHEET = "1 -";
    const std::string LOAD = "[E] TOLVA::Wrap_DEVMGR_DLL::Wrap_DEVMGR_DLL : ";
    const std::string NO_DLL = LOAD + "LoadLibrary('DEVMGR.DLL') failed : dwLastError = 126";
    const std::string NO_EXPORT = LOAD + "GetProcAddress('DeviceProperties_RunDLLW') failed : dwLastError = 127";
    const std::string START = "[V] TOLVA::ChangeAdapterOptions : starting ...";
    const std::string SHOWN = "[V] TOLVA::ChangeAdapterOptions : ... ending";
    const std::string FREED_DEVMGR = "[V] TOLVA::Wrap_DEVMGR_DLL::~Wrap_DEVMGR_DLL : FreeLibrary('DEVMGR.DLL')";
    const std::string FREED_IPHLPAPI =
        "[V] PreVistaAPI::Wrap_IPHLPAPI_DLL::~Wrap_IPHLPAPI_DLL : FreeLibrary('IPHLPAPI.DLL')";
    const struct
    {
        const wchar_t* pszWindows;
        const wchar_t* pszDevmgr; ///< the file that plays DEVMGR.DLL, if any
        std::string sAnswer;
        std::vector<std::string> end; ///< the last lines of the trace
    } rows[] = {
        {L"win7", L"devmgr_with_sheet.dll", SHEET, {START, SHOWN, FREED_DEVMGR}},
        {L"win7", L"devmgr_without_sheet.dll", NO_SHEET, {START, NO_EXPORT, SHOWN, FREED_DEVMGR}},
        {L"win7", nullptr, NO_SHEET, {START, NO_DLL, SHOWN}},
        // The last to be loaded is the first to go.
        {L"winxp64", L"devmgr_with_sheet.dll", SHEET, {START, SHOWN, FREED_DEVMGR, FREED_IPHLPAPI}},
        {L"winxp64", nullptr, NO_SHEET, {START, NO_DLL, SHOWN, FREED_IPHLPAPI}},
    };
    // With a name of its connection the adapter's address is changed by a command.
    const RegistryKeyScope connection(L"SYSTEM\\CurrentControlSet\\Control\\Network\\"
                                      L"{4D36E972-E325-11CE-BFC1-08002BE10318}\\{UNLOAD}\\Connection");
    connection.Set(L"", L"Name", StringData(L"no such connection"));
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(row.pszWindows)) + ' ' + row.sAnswer);
        const Installed program(L"unload_probe.exe", row.pszWindows);
        program.AddLibrary();
        const std::filesystem::path probes = BesideProgram(L"probe");
        std::filesystem::copy_file(probes / L"library_user.dll", program.Folder() / L"library_user.dll");
        if (row.pszDevmgr != nullptr)
            std::filesystem::copy_file(probes / row.pszDevmgr, program.Folder() / L"DEVMGR.DLL");
        EXPECT_EQ(row.sAnswer + "\r\nhandles: 0", program.Run());
        std::vector<std::string> lines = program.Trace();
        lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(std::min(lines.size(), row.end.size())));
        EXPECT_EQ(row.end, lines);
    }
}

TEST(Unloading, NeitherFailsNorLeavesAnythingBehindWithoutMemory)
{
    const Installed program(L"exhaustion_probe.exe", L"win7");
    program.AddLibrary();
    std::filesystem::copy_file(BesideProgram(L"probe\\library_user.dll"), program.Folder() / L"library_user.dll");
    EXPECT_EQ("blocks: 0, handles: 0", program.Run());
}

} // namespace
