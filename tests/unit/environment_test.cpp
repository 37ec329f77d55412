#include "fake_windows.h"

namespace
{

constexpr BYTE WORKSTATION = 1;
constexpr BYTE CONTROLLER = 2;
constexpr BYTE SERVER = 3;

const WindowsEnvironment& Detect()
{
    DetectWindowsEnvironment();
    return GetDetectedEnvironment();
}

TEST(Environment, CodeOfEverySystem)
{
    struct Row
    {
        DWORD dwMajor, dwMinor;
        unsigned long ulWorkstation, ulServer, ulMiniNT;
    };
    constexpr Row ROWS[] = {{5, 0, 2, 3, 0},  {5, 1, 4, 4, 0},    {5, 2, 4, 5, 16},   {6, 0, 6, 7, 17},
                            {6, 1, 9, 8, 18}, {6, 2, 10, 11, 19}, {6, 3, 12, 13, 20}, {6, 4, 14, 15, 0},
                            {10, 0, 0, 0, 0}, {4, 0, 0, 0, 0},    {5, 3, 0, 0, 0}};
    for (const Row& row : ROWS)
    {
        SCOPED_TRACE(testing::Message() << row.dwMajor << '.' << row.dwMinor);
        for (const auto& [type, ulCode] : {std::pair(WORKSTATION, row.ulWorkstation), std::pair(SERVER, row.ulServer),
                                           std::pair(CONTROLLER, row.ulServer)})
        {
            FakeWindows windows(row.dwMajor, row.dwMinor, type);
            EXPECT_EQ(ulCode, Detect().ulCode) << int{type};
            EXPECT_EQ(type == WORKSTATION, Detect().bWorkstation);
            EXPECT_EQ(type == CONTROLLER, Detect().bDomainController);
        }
        for (const wchar_t* pszKey : {FakeWindows::MININT_KEY, L"SYSTEM\\CurrentControlSet\\Control\\MyMiniNT"})
        {
            FakeWindows windows(row.dwMajor, row.dwMinor, SERVER);
            windows.keys[pszKey];
            EXPECT_EQ(row.ulMiniNT, Detect().ulCode);
            EXPECT_TRUE(Detect().bMiniNT);
            EXPECT_TRUE(Detect().bWorkstation);
        }
    }
}

TEST(Environment, DetectionRunsAgainOnlyWhileThereIsNoCode)
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
    EXPECT_EQ(6U, Detect().ulCode) << "a code that no row replaces stays";
}

TEST(Environment, CurrentVersionAgainstTheVersionRecord)
{
    struct Row
    {
        DWORD dwMajor, dwMinor;
        const wchar_t* pszText;
        unsigned long ulCode;
        DWORD dwRecordMajor, dwRecordMinor;
    };
    constexpr Row ROWS[] = {
        {6, 2, L"6.3", 12, 6, 3},  {6, 2, L"6,1", 9, 6, 1}, {6, 2, L"6.3.9600", 12, 6, 3}, {6, 2, L"5.1", 4, 5, 1},
        {5, 2, L"6.1", 9, 5, 2},   {5, 1, L"5.0", 2, 5, 1}, {6, 2, L"", 10, 6, 2},         {6, 2, L"6", 10, 6, 2},
        {6, 2, L"6.", 10, 6, 2},   {6, 2, L".3", 10, 6, 2}, {6, 2, L"6.x", 10, 6, 2},      {6, 2, L"six.3", 10, 6, 2},
        {6, 2, L"10.0", 0, 10, 0},
    };
    for (const Row& row : ROWS)
    {
        FakeWindows windows(row.dwMajor, row.dwMinor, WORKSTATION);
        windows.keys[FakeWindows::VERSION_KEY][L"CurrentVersion"] = row.pszText;
        const WindowsEnvironment& found = Detect();
        EXPECT_EQ(row.ulCode, found.ulCode) << testing::PrintToString(row.pszText);
        EXPECT_EQ(row.dwRecordMajor, found.version.dwMajorVersion);
        EXPECT_EQ(row.dwRecordMinor, found.version.dwMinorVersion);
        EXPECT_EQ(row.dwRecordMajor, GetWindowsMajorVersion());
        // The product information is asked for with the numbers of the registry.
        if (row.ulCode == 9)
        {
            EXPECT_EQ("6 1 0 0 ", windows.sProductInfoArguments);
        }
    }
}

TEST(Environment, ProductNameAndServicePack)
{
    FakeWindows windows(6, 1, WORKSTATION);
    windows.keys[FakeWindows::VERSION_KEY] = {{L"ProductName", L"Seven"}, {L"CSDVersion", L"Pack 1"}};
    EXPECT_EQ(velmor::string("Seven (x64)"), Detect().sProductName);
    EXPECT_EQ(velmor::string("Seven (x64)"), Detect().sProductName) << "after a second run";
    EXPECT_EQ(velmor::string("Pack 1"), Detect().sServicePack);

    windows.dwWow64Error = ERROR_CALL_NOT_IMPLEMENTED;
    windows.keys[FakeWindows::VERSION_KEY].erase(L"CSDVersion");
    EXPECT_EQ(velmor::string("Seven"), Detect().sProductName);
    EXPECT_FALSE(Detect().bX64);
    EXPECT_EQ(velmor::string(), Detect().sServicePack);

    windows.major = 5;
    windows.sProdspec = L"Five";
    EXPECT_EQ(velmor::string("Five"), Detect().sProductName);
    windows.dwWow64Error = 0;
    EXPECT_EQ(velmor::string("Five (x64)"), Detect().sProductName);
}

TEST(Environment, ServerCore)
{
    FakeWindows windows(6, 1, SERVER);
    auto& sType = windows.keys[FakeWindows::VERSION_KEY][L"InstallationType"];
    sType = L"Server core";
    EXPECT_FALSE(Detect().bServerCore);
    sType = L"Server Core";
    EXPECT_TRUE(Detect().bServerCore);
    sType = L"Server";
    windows.bProductInfo = false;
    EXPECT_TRUE(Detect().bServerCore) << "only the product information clears it";
    windows.bProductInfo = true;
    EXPECT_FALSE(Detect().bServerCore);
}

TEST(Environment, RootDomainMakesADomainController)
{
    FakeWindows windows(6, 1, SERVER);
    auto& sDomain = windows.keys[L"SYSTEM\\CurrentControlSet\\Services\\NTDS\\Parameters"][L"Root Domain"];
    EXPECT_FALSE(Detect().bDomainController) << "an empty one";
    sDomain = L"DC=x";
    EXPECT_TRUE(Detect().bDomainController);
}

TEST(Environment, FailuresThatCutTheDetectionShort)
{
    for (const int failure : {0, 1, 2})
    {
        FakeWindows windows(6, 1, WORKSTATION);
        windows.keys[FakeWindows::VERSION_KEY][L"ProductName"] = L"Seven";
        windows.bVersionW = failure != 0;
        windows.bVersionA = failure != 1;
        windows.dwWow64Error = failure == 2 ? ERROR_ACCESS_DENIED : 0;
        const WindowsEnvironment& found = Detect();
        EXPECT_EQ(0U, found.ulCode) << failure;
        EXPECT_FALSE(found.bWorkstation || found.bX64);
        EXPECT_TRUE(found.sProductName.empty());
        EXPECT_EQ(failure == 0 ? 0U : 6U, found.version.dwMajorVersion) << failure;
    }
}

} // namespace
