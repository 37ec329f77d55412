#include <cstring>

#include <winsock2.h>

#include <shlwapi.h>

#include <support/files.h>
#include <support/import_patch.h>
#include <zelk_nm/tolva.h>

#include "traced.h"

using namespace testing_support;
using velmor::ip_address;
using velmor::string;

namespace
{

using Conversions = Traced;
using Module = Traced;

TEST_F(Conversions, MasksAndPrefixes)
{
    for (unsigned int prefix = 0; prefix <= 32; ++prefix)
    {
        const auto byte = static_cast<unsigned char>(prefix);
        const unsigned long dwMask = TOLVA::ConvertPrefixToDword(byte);
        EXPECT_EQ(static_cast<unsigned long>(0xFFFFFFFF00000000ULL >> prefix & 0xFFFFFFFF), dwMask);
        EXPECT_EQ(prefix, TOLVA::ConvertDwordToPrefix(dwMask));
        EXPECT_EQ(prefix, TOLVA::ConvertNetmaskToPrefix(TOLVA::ConvertPrefixToNetmask(byte)));
    }
    for (const int prefix : {33, 64, 128, 255})
        EXPECT_EQ(0U, TOLVA::ConvertPrefixToDword(static_cast<unsigned char>(prefix)));
    EXPECT_EQ(24, TOLVA::ConvertDwordToPrefix(0xFF00FF00));
    EXPECT_EQ(32, TOLVA::ConvertDwordToPrefix(1));
    EXPECT_EQ(1, TOLVA::ConvertDwordToPrefix(0x80000000));
    EXPECT_EQ(32, TOLVA::ConvertNetmaskToPrefix(ip_address(string("::"))));
    trace.Empty();
    TOLVA::ConvertPrefixToNetmask(24);
    trace.ExpectLines(
        {"[V] TOLVA::ConvertPrefixToNetmask : starting ...", "[V] TOLVA::ConvertPrefixToNetmask : prefix = 24",
         "[V] TOLVA::ConvertPrefixToDword : starting ...", "[V] TOLVA::ConvertPrefixToDword : prefix = 24",
         "[V] TOLVA::ConvertPrefixToDword : dwNetmask = 0xFFFFFF00", "[V] TOLVA::ConvertPrefixToDword : ... ending",
         "[V] TOLVA::ConvertDwordToIpAddress : starting ...", "[V] TOLVA::ConvertDwordToIpAddress : dwIp = 0xFFFFFF00",
         "[V] TOLVA::ConvertDwordToIpAddress : sAddress = \"255.255.255.0\"",
         "[V] TOLVA::ConvertDwordToIpAddress : ... ending",
         "[V] TOLVA::ConvertPrefixToNetmask : sNetmask = \"255.255.255.0\"",
         "[V] TOLVA::ConvertPrefixToNetmask : ... ending"});
}

TEST_F(Conversions, AddressesAndNumbers)
{
    EXPECT_EQ(ip_address(string("192.168.1.10")), TOLVA::ConvertDwordToIpAddress(0xC0A8010A));
    EXPECT_EQ(0xC0A8010AU, TOLVA::ConvertIpAddressToDword(ip_address(string("192.168.1.10"))));
    TheTrace.SetTraceLevel(1);
    trace.Empty();
    EXPECT_EQ(0xFFFFFFFFU, TOLVA::ConvertIpAddressToDword(ip_address(string("none"))));
    EXPECT_EQ(0xFFFFFFFFU, TOLVA::ConvertIpAddressToDword(ip_address(string("::1"))));
    trace.ExpectLines(
        {"[E] TOLVA::ConvertIpAddressToDword : ... ending( Invalid velmor::ip_address ) : sAddress = \"<invalid>\"",
         "[E] TOLVA::ConvertIpAddressToDword : ... ending( velmor::ip_address not IPv4 )"});
}

TEST_F(Conversions, SocketAddresses)
{
    SOCKADDR_INET sa = {};
    sa.Ipv4.sin_addr.s_addr = ::htonl(0x01020304);
    for (const int family : {AF_UNSPEC, AF_UNIX, int{ip_address::INVALID_FAMILY}, 0xFFFF})
    {
        sa.si_family = static_cast<ADDRESS_FAMILY>(family);
        EXPECT_EQ(ip_address(), TOLVA::Convert_SOCKADDR_INET(sa)) << "the default, not an invalid one";
    }
    sa.si_family = AF_INET;
    EXPECT_EQ(ip_address(string("1.2.3.4")), TOLVA::Convert_SOCKADDR_INET(sa));
    EXPECT_EQ(ip_address(), TOLVA::Convert_SOCKET_ADDRESS({nullptr, 28}));

    for (const char* pszText : {"1.2.3.4", "2001:db8::5"})
    {
        const ip_address address{string(pszText)};
        SOCKADDR_INET round = TOLVA::Convert_SOCKADDR_INET(address);
        EXPECT_EQ(address, TOLVA::Convert_SOCKADDR_INET(round));
        const int size = address.is_ipv4() ? 16 : 28;
        auto* pAddress = reinterpret_cast<SOCKADDR*>(&round);
        EXPECT_EQ(address, TOLVA::Convert_SOCKET_ADDRESS({pAddress, size}));
        EXPECT_EQ(ip_address(), TOLVA::Convert_SOCKET_ADDRESS({pAddress, size - 1})) << "cut short";
        EXPECT_EQ(0, round.Ipv6.sin6_port);
    }
    EXPECT_EQ(AF_UNSPEC, TOLVA::Convert_SOCKADDR_INET(ip_address(string("none"))).si_family);
}

TEST_F(Conversions, HardwareAddressTexts)
{
    constexpr const char* TOO_FEW = "Too few address sections in string";
    constexpr const char* TOO_MANY = "Too many address sections in string";
    constexpr const char* TOO_LONG = "Too many hex digits in section";
    struct Row
    {
        const wchar_t* pszText;
        const char* pszResult;
        const char* pszReason;
    };
    constexpr Row ROWS[] = {
        {L"00-1a-2B-3c-4D-5e", "00-1A-2B-3C-4D-5E", nullptr},
        {L"0:1.2 3x4_5", "00-01-02-03-04-05", nullptr},
        {L"1-2-3-4-5-6-7", "01-02-03-04-05-06-07", nullptr},
        {L"FF-2-3-4-5-6-7-8", "FF-02-03-04-05-06-07-08", nullptr},
        {L"-----", "00-00-00-00-00-00", nullptr},
        {L"1--3-4-5-", "01-00-03-04-05-00", nullptr},
        {L"1-2-3-4-5-6-7-", "01-02-03-04-05-06-07-00", nullptr},
        {L"1-2-3-4-5-\x0666", "01-02-03-04-05-00-00", nullptr},
        {L"1-2-3-4-5-6-7-8-9", "", TOO_MANY},
        {L"1-2-3-4-5-6-7-8-", "", TOO_MANY},
        {L"1-2-3-4-5", "", TOO_FEW},
        {L"12", "", TOO_FEW},
        {L"001A2B3C4D5E", "", TOO_LONG},
        {L"00-1A-2B-3C-4D-05E", "", TOO_LONG},
        {L"", "", "Invalid string argument"},
    };
    for (const Row& row : ROWS)
    {
        TheTrace.SetTraceLevel(1);
        trace.Empty();
        const TOLVA::HARDWARE_ADDRESS address{string(row.pszText)};
        SCOPED_TRACE(testing::PrintToString(row.pszText));
        EXPECT_EQ(string(row.pszResult), string(address));
        EXPECT_EQ((std::strlen(row.pszResult) + 1) / 3, address.size());
        EXPECT_EQ(row.pszReason != nullptr, address == TOLVA::HARDWARE_ADDRESS());
        if (row.pszReason != nullptr)
            trace.ExpectLines({std::string("[E] TOLVA::HARDWARE_ADDRESS::HARDWARE_ADDRESS : ") + row.pszReason});
        else
            trace.ExpectLines({});
    }
}

TEST_F(Conversions, HardwareAddressBytes)
{
    constexpr unsigned char BYTES[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    using Address = TOLVA::HARDWARE_ADDRESS;
    EXPECT_EQ(8U, Address(BYTES, 10).size());
    EXPECT_EQ(string("01-02-03-04-05-06-07-08"), string(Address(BYTES, 10)));
    EXPECT_EQ(string("01"), string(Address(BYTES, 1)));
    EXPECT_EQ(Address(BYTES, 8), Address(BYTES, 10));
    constexpr unsigned char ZEROES[8] = {};
    EXPECT_NE(Address(ZEROES, 6), Address(ZEROES, 7));
    EXPECT_NE(Address(ZEROES, 6), Address());

    for (unsigned int count = 1; count <= 12; ++count)
    {
        unsigned char copy[13];
        std::memset(copy, 0xEE, sizeof(copy));
        Address(BYTES, 6).copy(copy, count);
        for (unsigned int i = 0; i < sizeof(copy); ++i)
            EXPECT_EQ(i >= count ? 0xEE : i < 6 ? BYTES[i] : 0, copy[i]) << count << ' ' << i;
    }

    TheTrace.SetTraceLevel(1);
    trace.Empty();
    unsigned char untouched = 7;
    EXPECT_EQ(Address(), Address(nullptr, 6));
    EXPECT_EQ(Address(), Address(BYTES, 0));
    Address(BYTES, 6).copy(nullptr, 6);
    Address(BYTES, 6).copy(&untouched, 0);
    EXPECT_EQ(7, untouched);
    const std::string sConstructor = "[E] TOLVA::HARDWARE_ADDRESS::HARDWARE_ADDRESS";
    const std::string sReason = " : Invalid byte array and/or count arguments";
    trace.ExpectLines({sConstructor + sReason, sConstructor + sReason, "[E] TOLVA::HARDWARE_ADDRESS::copy" + sReason,
                       "[E] TOLVA::HARDWARE_ADDRESS::copy" + sReason});
}

/// A loaded module with a version resource, whose reading fails where `pszFailing` says.
struct FakeVersion
{
    std::string sFailing;
    std::wstring sText = L"3.1.2.7";
    DWORD translation = 0x04B00409;

    BOOL Answer(const char* pszFunction, DWORD dwError) const
    {
        ::SetLastError(sFailing == pszFunction ? dwError : 0);
        return sFailing != pszFunction;
    }
    ImportPatch<decltype(&::GetModuleHandleW)> handle{
        "GetModuleHandleW",
        [this](const wchar_t*) { return Answer("GetModuleHandleW", 126) ? handle.Original()(L"ntdll.dll") : nullptr; }};
    ImportPatch<decltype(&::GetModuleFileNameW)> path{"GetModuleFileNameW",
                                                      [this](HMODULE hModule, wchar_t* pszText, DWORD dwSize) -> DWORD {
                                                          // That of the program itself is always known.
                                                          if (hModule != nullptr && !Answer("GetModuleFileNameW", 6))
                                                              return 0;
                                                          return path.Original()(hModule, pszText, dwSize);
                                                      }};
    ImportPatch<decltype(&::GetFileVersionInfoSizeW)> size{
        "GetFileVersionInfoSizeW",
        [this](const wchar_t*, DWORD*) -> DWORD { return Answer("GetFileVersionInfoSizeW", 1813) ? 64 : 0; }};
    ImportPatch<decltype(&::GetFileVersionInfoW)> info{"GetFileVersionInfoW",
                                                       [this](const wchar_t*, DWORD, DWORD dwSize, void*) -> BOOL {
                                                           EXPECT_EQ(64U, dwSize);
                                                           return Answer("GetFileVersionInfoW", 1812);
                                                       }};
    ImportPatch<decltype(&::VerQueryValueW)> query{
        "VerQueryValueW", [this](const void*, const wchar_t* pszBlock, void** pFound, UINT* pCount) -> BOOL {
            if (std::wcscmp(pszBlock, L"\\VarFileInfo\\Translation") == 0)
            {
                *pFound = &translation;
                *pCount = sizeof(translation);
                return Answer("Translation", 1811);
            }
            EXPECT_STREQ(L"\\StringFileInfo\\040904B0\\FileVersion", pszBlock);
            *pFound = sText.data();
            *pCount = static_cast<UINT>(sText.size() + 1);
            return Answer("FileVersion", 1810);
        }};
};

class VersionLog
{
public:
    [[nodiscard]] std::string Text() const { return ReadFileBytes(m_folder / L"Version.log"); }

private:
    TempDirectory m_folder;
    IniFile m_settings{BesideProgram(L"zlk.ini"),
                       "[File Locations]\r\nLog Files=" + m_folder.Path().string() + "\r\nLogfiles=Y:\\other\r\n"};
};

TEST_F(Module, VersionOfAModuleAndEveryFailure)
{
    struct Row
    {
        const char* pszFailing;
        const char* pszLine;
        bool bGoesOn;
    };
    constexpr Row ROWS[] = {
        {"", nullptr, true},
        {"GetModuleHandleW", "... ending( NULL module )", false},
        {"GetModuleFileNameW", "... ending( GetModuleFileNameW failed ) : dwLastError = 6", false},
        {"GetFileVersionInfoSizeW", "... ending( GetFileVersionInfoSize failed ) : dwLastError = 1813", false},
        {"GetFileVersionInfoW", "... ending( GetFileVersionInfo failed ) : dwLastError = 1812", false},
        {"Translation", "VerQueryValue failed : dwLastError = 1811", true},
        {"FileVersion", "VerQueryValue failed : dwLastError = 1810", true},
    };
    const std::string sName = "TOLVA::GetResourceVersionStr : ";
    for (const Row& row : ROWS)
    {
        const VersionLog log;
        trace.Empty();
        FakeVersion fake;
        fake.sFailing = row.pszFailing;
        const std::string sVersion = row.pszLine == nullptr ? "3.1.2.7" : "Error";
        string sFound = L"before";
        TOLVA::GetResourceVersionStr("some.dll", sFound);
        EXPECT_EQ(string(sVersion.c_str()), sFound) << row.pszFailing;
        EXPECT_EQ(row.bGoesOn ? "[some.dll]\r\nVersion=" + sVersion + "\r\n" : "", log.Text());
        std::vector<std::string> lines = {"[V] " + sName + "starting ..."};
        if (row.pszLine != nullptr)
            lines.push_back("[E] " + sName + row.pszLine);
        if (row.bGoesOn)
            lines.push_back("[V] " + sName + "... ending");
        trace.ExpectLines(lines);
    }
    trace.Empty();
    string sFound = L"before";
    TOLVA::GetResourceVersionStr("", sFound);
    EXPECT_EQ(string("before"), sFound);
    trace.ExpectLines({"[V] " + sName + "starting ...", "[E] " + sName + "... ending( Empty DLL name parameter )"});
}

TEST_F(Module, PropertiesAndTheConstructorsTranscript)
{
    const VersionLog log;
    const IniFile level(BesideProgram(L"trace.ini"), "[Main]\r\nTOLVA_TraceLevel=4\r\n");
    const FakeVersion fake;
    string sDescription;
    EXPECT_EQ(0U, TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_DESCRIPTION, sDescription));
    const std::string sText = sDescription.narrow_c_str();
    EXPECT_EQ(0U, sText.find("Velmor Network Library (TOLVQ) created on "));
    EXPECT_EQ(std::strlen("Velmor Network Library (TOLVQ) created on May 15 2015 at 12:05:48"), sText.size());
    string sValue = L"kept";
    for (const unsigned int category : {0U, 3U, 0xFFFFFFFFU})
        EXPECT_EQ(1U, TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_CAT(category), sValue));
    EXPECT_EQ(string("kept"), sValue);

    TheTrace.SetTraceLevel(0);
    WriteFileBytes(trace.Path(), "what was traced before");
    {
        TOLVA first;
        TOLVA second;
        first = second;
    }
    trace.ExpectLines({"[V] TOLVA::TOLVA : Constructor", "[V] TOLVA::GetResourceVersionStr : starting ...",
                       "[V] TOLVA::GetResourceVersionStr : ... ending", "[I] TOLVA::TOLVA : sVersion = \"3.1.2.7\"",
                       "[I] TOLVA::TOLVA : sDescription = \"" + sText + '"', "[V] TOLVA::~TOLVA : Destructor",
                       "[V] TOLVA::~TOLVA : Destructor"});
    EXPECT_EQ("[ZELK_NM.DLL]\r\nVersion=3.1.2.7\r\n", log.Text());
}

TEST_F(Module, Directories)
{
    string sDir = L"before";
    const string sOwn(trace.Directory().parent_path().wstring());
    EXPECT_TRUE(TOLVA::GetOwnDir(sDir));
    EXPECT_EQ(sOwn, sDir);
    EXPECT_TRUE(TOLVA::GetLogDir(sDir));
    EXPECT_EQ(string(L"X:\\Program Files\\Velmor\\ZELK\\Logfiles"), sDir);
    {
        const IniFile settings(BesideProgram(L"zlk.ini"), "[File Locations]\r\nLogfiles=T:\\t\r\nLog Files=L:\\l\r\n");
        EXPECT_TRUE(TOLVA::GetLogDir(sDir));
        EXPECT_EQ(string(L"L:\\l"), sDir);
        CTrace(L"none", L"key", 7).GetLogDirectory(sDir);
        EXPECT_EQ(string(L"T:\\t"), sDir);
    }
    const auto path = PATCH_IMPORT(GetModuleFileNameW, [](HMODULE, wchar_t* pszText, DWORD) -> DWORD {
        std::wcscpy(pszText, L"P:\\p.exe");
        ::SetLastError(ERROR_ACCESS_DENIED);
        return 8;
    });
    sDir = L"before";
    EXPECT_FALSE(TOLVA::GetOwnDir(sDir));
    EXPECT_FALSE(TOLVA::GetLogDir(sDir));
    EXPECT_EQ(string(L"before"), sDir);
    trace.ExpectLines({});
}

TEST_F(Module, TemporaryFiles)
{
    const TempDirectory folder;
    std::wstring sTemp = (folder / L"new\\").wstring();
    DWORD dwAnswer = 0;
    const auto path = PATCH_IMPORT(GetTempPathW, [&](DWORD dwSize, wchar_t* pszText) -> DWORD {
        EXPECT_EQ(260U, dwSize);
        std::wcscpy(pszText, sTemp.c_str());
        ::SetLastError(8);
        return dwAnswer;
    });
    const std::string sName = "TOLVA::GetTempFilename : ";
    string sFirst = L"before", sSecond;
    for (const DWORD dwLength : {0U, 261U})
    {
        trace.Empty();
        dwAnswer = dwLength;
        EXPECT_FALSE(TOLVA::GetTempFilename(sFirst));
        EXPECT_EQ(string("before"), sFirst);
        trace.ExpectLines(
            {"[V] " + sName + "starting ...", "[E] " + sName + "... ending( GetTempPath() failed ) : dwLastError = 8"});
    }
    trace.Empty();
    dwAnswer = 260;
    EXPECT_TRUE(TOLVA::GetTempFilename(sFirst)); // its directory is made first
    const std::filesystem::path file = sFirst.c_str();
    trace.ExpectLines({"[V] " + sName + "starting ...",
                       "[V] " + sName + "wszTempPath = \"" + (folder / L"new\\").string() + '"',
                       "[V] " + sName + "wszTempFilename = \"" + file.string() + '"', "[V] " + sName + "... ending"});
    EXPECT_TRUE(TOLVA::GetTempFilename(sSecond));
    EXPECT_NE(sFirst, sSecond);
    for (const string& sFile : {sFirst, sSecond})
        EXPECT_EQ(0U, std::filesystem::file_size(sFile.c_str()));
    EXPECT_EQ((folder / L"new").wstring(), file.parent_path().wstring());
    EXPECT_EQ(L"TOL", file.filename().wstring().substr(0, 3));

    sTemp = (folder / L"missing\\missing\\").wstring();
    trace.Empty();
    EXPECT_FALSE(TOLVA::GetTempFilename(sSecond));
    EXPECT_EQ(0U,
              trace.Lines().back().find("[E] " + sName + "... ending( GetTempFileName() failed ) : dwLastError = "));
}

} // namespace
