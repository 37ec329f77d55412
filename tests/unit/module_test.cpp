#include <cstring>

#include <winsock2.h>

#include <shlwapi.h>

#include <support/files.h>
#include <support/import_patch.h>
#include <support/traced.h>
#include <zelk_nm/tolva.h>

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
    golden->Lines(trace.Lines());
}

TEST_F(Conversions, AddressesAndNumbers)
{
    EXPECT_EQ(ip_address(string("192.168.1.10")), TOLVA::ConvertDwordToIpAddress(0xC0A8010A));
    EXPECT_EQ(0xC0A8010AU, TOLVA::ConvertIpAddressToDword(ip_address(string("192.168.1.10"))));
    EXPECT_EQ(0xFFFFFFFFU, TOLVA::ConvertIpAddressToDword(ip_address(string("none"))));
    EXPECT_EQ(0xFFFFFFFFU, TOLVA::ConvertIpAddressToDword(ip_address(string("::1"))));
    golden->Lines(trace.Lines());
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
        for (const int length : {size, size - 1, 0, -1})
            EXPECT_EQ(address, TOLVA::Convert_SOCKET_ADDRESS({pAddress, length})) << "the length does not decide";
        EXPECT_EQ(0, round.Ipv6.sin6_port);
    }
    EXPECT_EQ(AF_UNSPEC, TOLVA::Convert_SOCKADDR_INET(ip_address(string("none"))).si_family);
}

TEST_F(Conversions, HardwareAddressTexts)
{
    for (const wchar_t* pszText :
         {L"00-1a-2B-3c-4D-5e", L"0:1.2 3x4_5", L"1-2-3-4-5-6-7", L"FF-2-3-4-5-6-7-8", L"-----", L"1--3-4-5-",
          L"1-2-3-4-5-6-7-", L"1-2-3-4-5-\x0666", L"1-2-3-4-5-6-7-8-9", L"1-2-3-4-5-6-7-8-", L"1-2-3-4-5", L"12",
          L"001A2B3C4D5E", L"00-1A-2B-3C-4D-05E", L""})
    {
        const TOLVA::HARDWARE_ADDRESS address{string(pszText)};
        golden->Line(pszText, "is", address, "of", address.size());
        EXPECT_TRUE(address.size() > 0 || address == TOLVA::HARDWARE_ADDRESS());
    }
    golden->Lines(trace.Lines());
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

    trace.Empty();
    unsigned char untouched = 7;
    EXPECT_EQ(Address(), Address(nullptr, 6));
    EXPECT_EQ(Address(), Address(BYTES, 0));
    Address(BYTES, 6).copy(nullptr, 6);
    Address(BYTES, 6).copy(&untouched, 0);
    EXPECT_EQ(7, untouched);
    golden->Line(trace.Complaints());
}

/// A loaded module with a version resource, whose reading fails where `sFailing` says.
struct FakeVersion
{
    std::string sFailing;
    std::wstring sText = L"3.1.2.7";
    DWORD translation = 0x04B00409;
    ImportPatches patches;

    BOOL Answer(const char* pszFunction, DWORD dwError) const
    {
        ::SetLastError(sFailing == pszFunction ? dwError : 0);
        return sFailing != pszFunction;
    }
    explicit FakeVersion(const char* pszFailing = "") : sFailing(pszFailing)
    {
        ADD_PATCH(patches, GetModuleHandleW, [this](auto original, const wchar_t*) {
            return Answer("GetModuleHandleW", 126) ? original(L"ntdll.dll") : nullptr;
        });
        ADD_PATCH(patches, GetModuleFileNameW,
                  [this](auto original, HMODULE hModule, wchar_t* pszText, DWORD dwSize) -> DWORD {
                      // That of the program itself is always known.
                      const bool bKnown = hModule == nullptr || Answer("GetModuleFileNameW", 6);
                      return bKnown ? original(hModule, pszText, dwSize) : 0;
                  });
        ADD_PATCH(patches, GetFileVersionInfoSizeW,
                  [this](const wchar_t*, DWORD*) -> DWORD { return Answer("GetFileVersionInfoSizeW", 1813) ? 64 : 0; });
        ADD_PATCH(patches, GetFileVersionInfoW, [this](const wchar_t*, DWORD, DWORD dwSize, void*) -> BOOL {
            EXPECT_EQ(64U, dwSize);
            return Answer("GetFileVersionInfoW", 1812);
        });
        ADD_PATCH(patches, VerQueryValueW, [this](const void*, const wchar_t* pszBlock, void** pFound, UINT* pCount) {
            const bool bTranslation = std::wcscmp(pszBlock, L"\\VarFileInfo\\Translation") == 0;
            EXPECT_TRUE(bTranslation || std::wcscmp(pszBlock, L"\\StringFileInfo\\040904B0\\FileVersion") == 0);
            *pFound = bTranslation ? static_cast<void*>(&translation) : sText.data();
            *pCount = static_cast<UINT>(bTranslation ? sizeof(translation) : sText.size() + 1);
            if (bTranslation && sFailing == "half a translation")
                *pCount /= 2;
            return bTranslation ? Answer("Translation", 1811) : Answer("FileVersion", 1810);
        });
    }
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
    for (const char* pszFailing :
         {"", "GetModuleHandleW", "GetModuleFileNameW", "GetFileVersionInfoSizeW", "GetFileVersionInfoW", "Translation",
          "half a translation", "FileVersion", "no name"})
    {
        const VersionLog log;
        trace.Empty();
        const FakeVersion fake(pszFailing);
        string sFound = L"before";
        TOLVA::GetResourceVersionStr(pszFailing == std::string("no name") ? "" : "some.dll", sFound);
        golden->Line("== failing:", pszFailing, "found", sFound, "logged", log.Text());
        golden->Lines(trace.Lines());
    }
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
    for (const std::string& sLine : trace.Lines())
        golden->Line(sLine.substr(0, sLine.find(" created on ")));
    EXPECT_EQ("[ZELK_NM.DLL]\r\nVersion=3.1.2.7\r\n", log.Text());
}

TEST_F(Module, Directories)
{
    string sDir;
    EXPECT_TRUE(TOLVA::GetOwnDir(sDir));
    EXPECT_EQ(string(trace.Directory().parent_path().wstring()), sDir);
    EXPECT_TRUE(TOLVA::GetLogDir(sDir));
    EXPECT_EQ(string(L"X:\\Program Files\\Velmor\\ZELK\\Logfiles"), sDir);
    const IniFile settings(BesideProgram(L"zlk.ini"), "[File Locations]\r\nLogfiles=T:\\t\r\nLog Files=L:\\l\r\n");
    EXPECT_TRUE(TOLVA::GetLogDir(sDir));
    EXPECT_EQ(string(L"L:\\l"), sDir) << "not the trace's own setting";
    const auto path = PATCH_IMPORT(GetModuleFileNameW, [](auto...) -> DWORD { return 0; });
    EXPECT_FALSE(TOLVA::GetOwnDir(sDir));
    EXPECT_FALSE(TOLVA::GetLogDir(sDir));
    EXPECT_EQ(string(L"L:\\l"), sDir);
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
    const std::string NAME = "] TOLVA::GetTempFilename : ";
    string sFirst = L"before", sSecond;
    for (const DWORD dwLength : {0U, 261U})
    {
        dwAnswer = dwLength;
        EXPECT_FALSE(TOLVA::GetTempFilename(sFirst));
        EXPECT_EQ(string("before"), sFirst);
        EXPECT_EQ("[E" + NAME + "... ending( GetTempPath() failed ) : dwLastError = 8\n", trace.Complaints());
    }
    dwAnswer = 260;
    EXPECT_TRUE(TOLVA::GetTempFilename(sFirst)); // its directory is made first
    const std::filesystem::path file = sFirst.c_str();
    trace.ExpectLines({"[V" + NAME + "starting ...",
                       "[V" + NAME + "wszTempPath = \"" + (folder / L"new\\").string() + '"',
                       "[V" + NAME + "wszTempFilename = \"" + file.string() + '"', "[V" + NAME + "... ending"});
    EXPECT_TRUE(TOLVA::GetTempFilename(sSecond));
    EXPECT_NE(sFirst, sSecond);
    EXPECT_EQ(0U, std::filesystem::file_size(file));
    EXPECT_EQ((folder / L"new").wstring(), file.parent_path().wstring());
    EXPECT_EQ(L"TOL", file.filename().wstring().substr(0, 3));

    sTemp = (folder / L"missing\\missing\\").wstring();
    EXPECT_FALSE(TOLVA::GetTempFilename(sSecond));
    EXPECT_TRUE(
        trace.Complaints().starts_with("[E" + NAME + "... ending( GetTempFileName() failed ) : dwLastError = "));
}

} // namespace
