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
    for (const DWORD dwVersion : {50U, 51U, 52U, 60U, 61U, 62U, 63U, 64U, 100U, 40U, 53U})
    {
        const DWORD dwMajor = dwVersion / 10, dwMinor = dwVersion % 10;
        for (const BYTE type : {WORKSTATION, SERVER, CONTROLLER})
        {
            FakeWindows windows(dwMajor, dwMinor, type);
            Tell(Show(dwMajor, dwMinor, "type", type));
        }
        for (const wchar_t* pszKey : {FakeWindows::MININT_KEY, L"SYSTEM\\CurrentControlSet\\Control\\MyMiniNT"})
        {
            FakeWindows windows(dwMajor, dwMinor, SERVER);
            FakeWindows::Set(pszKey);
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
            FakeWindows::Set(FakeWindows::VERSION_KEY, L"CurrentVersion", pszText);
            Tell(Show(dwMajor, "and", pszText));
            golden.Line("product of", windows.sProductInfoArguments);
        }
}

TEST_F(Environment, NamesAndEditions)
{
    FakeWindows windows(6, 1, SERVER);
    FakeWindows::Set(FakeWindows::VERSION_KEY, L"ProductName", L"Seven");
    FakeWindows::Set(FakeWindows::VERSION_KEY, L"CSDVersion", L"Pack 1");
    Tell("64 bits");
    Tell("after a second run");
    windows.dwWow64Error = ERROR_CALL_NOT_IMPLEMENTED;
    ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, FakeWindows::VERSION_KEY, L"CSDVersion");
    Tell("32 bits, no service pack");
    windows.major = 5;
    const IniFile prodspec(BesideProgram(L"prodspec.ini"), "[Product Specification]\r\nProduct=Five\r\n");
    Tell("by the file of older systems");
    windows.dwWow64Error = 0;
    Tell("of 64 bits");

    windows.major = 6;
    for (const wchar_t* pszType : {L"Server core", L"Server Core", L"Server"})
        for (const bool bProductInfo : {true, false}) // only the product information clears what was found
        {
            FakeWindows::Set(FakeWindows::VERSION_KEY, L"InstallationType", pszType);
            windows.bProductInfo = bProductInfo;
            Tell(Show(pszType, bProductInfo));
        }
    for (const wchar_t* pszDomain : {L"", L"DC=x"})
    {
        FakeWindows::Set(L"SYSTEM\\CurrentControlSet\\Services\\NTDS\\Parameters", L"Root Domain", pszDomain);
        Tell(Show("root domain", pszDomain));
    }
}

TEST_F(Environment, FailuresThatCutTheDetectionShort)
{
    for (const int failure : {0, 1, 2})
    {
        FakeWindows windows(6, 1, WORKSTATION);
        FakeWindows::Set(FakeWindows::VERSION_KEY, L"ProductName", L"Seven");
        windows.bVersionW = failure != 0;
        windows.bVersionA = failure != 1;
        windows.dwWow64Error = failure == 2 ? ERROR_ACCESS_DENIED : 0;
        Tell(Show("failure", failure));
    }
}

} // namespace
