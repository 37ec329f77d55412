#include <support/golden.h>

#include "fake_windows.h"

using namespace testing_support;

namespace
{

constexpr BYTE WORKSTATION = 1;
constexpr BYTE CONTROLLER = 2;
constexpr BYTE SERVER = 3;

/// What a detection finds out, in one line of the golden text.
class Environment : public testing::Test
{
protected:
    const WindowsEnvironment& Tell(const std::string& sTitle)
    {
        DetectWindowsEnvironment();
        const WindowsEnvironment& found = GetDetectedEnvironment();
        std::string sFlags;
        for (const auto& [bSet, pszName] : {std::pair(found.bX64, " x64"),
                                            {found.bWorkstation, " workstation"},
                                            {found.bDomainController, " controller"},
                                            {found.bServerCore, " core"},
                                            {found.bMiniNT, " MiniNT"}})
            sFlags += bSet ? pszName : "";
        golden.Line(sTitle + ": code", found.ulCode, "version", found.version.dwMajorVersion,
                    found.version.dwMinorVersion, '(' + Show(GetWindowsMajorVersion()) + ')' + sFlags,
                    found.sProductName, found.sServicePack);
        return found;
    }

    Golden golden;
};

TEST_F(Environment, EverySystem)
{
    for (const auto& [dwMajor, dwMinor] : {std::pair<DWORD, DWORD>(5, 0),
                                           {5, 1},
                                           {5, 2},
                                           {6, 0},
                                           {6, 1},
                                           {6, 2},
                                           {6, 3},
                                           {6, 4},
                                           {10, 0},
                                           {4, 0},
                                           {5, 3}})
    {
        for (const BYTE type : {WORKSTATION, SERVER, CONTROLLER})
        {
            FakeWindows windows(dwMajor, dwMinor, type);
            Tell(Show(dwMajor, dwMinor, "type", type));
        }
        for (const wchar_t* pszKey : {FakeWindows::MININT_KEY, L"SYSTEM\\CurrentControlSet\\Control\\MyMiniNT"})
        {
            FakeWindows windows(dwMajor, dwMinor, SERVER);
            windows.keys[pszKey];
            Tell(Show(dwMajor, dwMinor, pszKey));
        }
    }
}

TEST_F(Environment, DetectionRunsAgainOnlyWhileThereIsNoCode)
{
    FakeWindows windows(10, 0, WORKSTATION);
    EXPECT_EQ(0U, GetWindowsEnvironment());
    EXPECT_EQ(0U, GetWindowsEnvironment());
    EXPECT_EQ(2, windows.detections);
    EXPECT_EQ(10U, GetWindowsMajorVersion());
    windows.major = 6;
    EXPECT_EQ(6U, GetWindowsEnvironment());
    EXPECT_EQ(6U, GetWindowsEnvironment());
    EXPECT_EQ(3, windows.detections);
    windows.minor = 9;
    EXPECT_EQ(6U, Tell("a code that no row replaces stays").ulCode);
}

TEST_F(Environment, CurrentVersionAgainstTheVersionRecord)
{
    for (const wchar_t* pszText :
         {L"6.3", L"6,1", L"6.3.9600", L"5.1", L"", L"6", L"6.", L".3", L"6.x", L"six.3", L"10.0"})
        for (const DWORD dwMajor : {5UL, 6UL})
        {
            FakeWindows windows(dwMajor, 2, WORKSTATION);
            windows.keys[FakeWindows::VERSION_KEY][L"CurrentVersion"] = pszText;
            Tell(Show(dwMajor, "and", pszText));
            golden.Line("product of", windows.sProductInfoArguments);
        }
}

TEST_F(Environment, NamesAndEditions)
{
    FakeWindows windows(6, 1, SERVER);
    auto& values = windows.keys[FakeWindows::VERSION_KEY];
    values = {{L"ProductName", L"Seven"}, {L"CSDVersion", L"Pack 1"}};
    Tell("64 bits");
    Tell("after a second run");
    windows.dwWow64Error = ERROR_CALL_NOT_IMPLEMENTED;
    values.erase(L"CSDVersion");
    Tell("32 bits, no service pack");
    windows.major = 5;
    windows.sProdspec = L"Five";
    Tell("by the file of older systems");
    windows.dwWow64Error = 0;
    Tell("of 64 bits");

    windows.major = 6;
    for (const wchar_t* pszType : {L"Server core", L"Server Core", L"Server"})
        for (const bool bProductInfo : {true, false}) // only the product information clears what was found
        {
            values[L"InstallationType"] = pszType;
            windows.bProductInfo = bProductInfo;
            Tell(Show(pszType, bProductInfo));
        }
    auto& sDomain = windows.keys[L"SYSTEM\\CurrentControlSet\\Services\\NTDS\\Parameters"][L"Root Domain"];
    Tell("an empty root domain");
    sDomain = L"DC=x";
    Tell("a root domain");
}

TEST_F(Environment, FailuresThatCutTheDetectionShort)
{
    for (const int failure : {0, 1, 2})
    {
        FakeWindows windows(6, 1, WORKSTATION);
        windows.keys[FakeWindows::VERSION_KEY][L"ProductName"] = L"Seven";
        windows.bVersionW = failure != 0;
        windows.bVersionA = failure != 1;
        windows.dwWow64Error = failure == 2 ? ERROR_ACCESS_DENIED : 0;
        Tell(Show("failure", failure));
    }
}

} // namespace
