#include <algorithm>
#include <cstring>
#include <set>

#include <winsock2.h>

#include <shlwapi.h>

#include <support/files.h>
#include <support/import_patch.h>
#include <support/noted_calls.h>
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
    TheTrace.SetTraceLevel(0);
    for (unsigned int prefix = 0; prefix <= 255; prefix += prefix < 33 ? 1 : 37)
    {
        const auto byte = static_cast<unsigned char>(prefix);
        const unsigned long dwMask = TOLVA::ConvertPrefixToDword(byte);
        golden->Line(prefix, dwMask, TOLVA::ConvertDwordToPrefix(dwMask), TOLVA::ConvertPrefixToNetmask(byte),
                     TOLVA::ConvertNetmaskToPrefix(TOLVA::ConvertPrefixToNetmask(byte)));
    }
    for (const unsigned long dwMask : {0xFF00FF00UL, 1UL, 0x80000000UL})
        golden->Line(dwMask, TOLVA::ConvertDwordToPrefix(dwMask));
    TheTrace.SetTraceLevel(4);
    TOLVA::ConvertPrefixToNetmask(24);
    for (const char* pszText : {"192.168.1.10", "none", "::", "::1"})
    {
        const ip_address address{string(pszText)};
        golden->Line(pszText, TOLVA::ConvertIpAddressToDword(address));
        golden->Line("as a mask", TOLVA::ConvertNetmaskToPrefix(address));
    }
    golden->Line(TOLVA::ConvertDwordToIpAddress(0xC0A8010A));
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
    TheTrace.SetTraceLevel(2);
    constexpr unsigned char BYTES[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    constexpr unsigned char ZEROES[8] = {};
    using Address = TOLVA::HARDWARE_ADDRESS;
    EXPECT_NE(Address(ZEROES, 6), Address(ZEROES, 7));
    EXPECT_NE(Address(ZEROES, 6), Address());
    for (unsigned int count = 0; count <= 12; ++count)
    {
        unsigned char copy[13];
        std::memset(copy, 0xEE, sizeof(copy));
        Address(BYTES, 6).copy(copy, count);
        const Address made(BYTES, std::min(count, 10U));
        golden->Line(made, "of", made.size(), made == Address(BYTES, 8), "copied",
                     std::vector<unsigned int>(copy, std::end(copy)));
    }
    EXPECT_EQ(Address(), Address(nullptr, 6));
    Address(BYTES, 6).copy(nullptr, 6);
    golden->Lines(trace.Lines());
}

/// A loaded module with a version resource.
struct FakeVersion
{
    NotedCalls calls;
    std::wstring sText = L"3.1.2.7";
    DWORD translation = 0x04B00409;
    UINT translationSize = sizeof(translation); ///< as it is said
    ImportPatches patches;

    explicit FakeVersion(int refused = 0)
    {
        calls.refused = refused;
        ADD_PATCH(patches, GetModuleHandleW, [this](auto original, const wchar_t* pszName) {
            return calls.Allow("handle of", pszName) ? original(L"ntdll.dll") : nullptr;
        });
        ADD_PATCH(patches, GetModuleFileNameW, [this](auto original, HMODULE hModule, auto... arguments) -> DWORD {
            // That of the program itself is always known.
            return hModule == nullptr || calls.Allow("path") ? original(hModule, arguments...) : 0;
        });
        ADD_PATCH(patches, GetFileVersionInfoSizeW,
                  [this](const wchar_t*, DWORD*) -> DWORD { return calls.Allow("size") ? 64 : 0; });
        ADD_PATCH(patches, GetFileVersionInfoW, [this](const wchar_t*, DWORD, DWORD dwSize, void*) -> BOOL {
            return calls.Allow("resource of", dwSize);
        });
        ADD_PATCH(patches, VerQueryValueW, [this](const void*, const wchar_t* pszBlock, void** pFound, UINT* pCount) {
            const bool bTranslation = std::wcscmp(pszBlock, L"\\VarFileInfo\\Translation") == 0;
            *pFound = bTranslation ? static_cast<void*>(&translation) : sText.data();
            *pCount = bTranslation ? translationSize : static_cast<UINT>(sText.size() + 1);
            return BOOL{calls.Allow(pszBlock)};
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
    const auto Read = [this](const char* pszModule, int refused, UINT translationSize) {
        const VersionLog log;
        trace.Empty();
        FakeVersion fake(refused);
        fake.translationSize = translationSize;
        string sFound = L"before";
        TOLVA::GetResourceVersionStr(pszModule, sFound);
        golden->Line("== version of", pszModule, "is", sFound, "logged", log.Text());
        golden->Line(fake.calls.sNotes);
        golden->Lines(trace.Lines());
        return fake.calls.made;
    };
    for (int refused = 0, made = 0; refused <= made; ++refused)
        made = std::max(made, Read("some.dll", refused, sizeof(DWORD)));
    Read("half.dll", 0, sizeof(WORD));
    Read("", 0, sizeof(DWORD));
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
    EXPECT_EQ("", trace.Bytes());
}

TEST_F(Module, TemporaryFiles)
{
    const TempDirectory folder;
    std::set<std::filesystem::path> files;
    for (const auto& [dwLength, pszName] : {std::pair(0UL, L"new\\"),
                                            {261UL, L"new\\"},
                                            {260UL, L"new\\"}, // it is made
                                            {260UL, L"new\\"},
                                            {260UL, L"missing\\missing\\"}})
    {
        const std::wstring sTemp = (folder / pszName).wstring();
        const auto path = PATCH_IMPORT(GetTempPathW, [&](DWORD dwSize, wchar_t* pszText) -> DWORD {
            EXPECT_EQ(260U, dwSize);
            std::wcscpy(pszText, sTemp.c_str());
            ::SetLastError(8);
            return dwLength;
        });
        trace.Empty();
        string sFile = L"before";
        golden->Line("== a path of", dwLength, "to", pszName, TOLVA::GetTempFilename(sFile));
        for (const std::string& sLine : trace.Lines())
            golden->Line(sLine.substr(0, sLine.find(" = \"")));
        if (std::filesystem::exists(sFile.c_str()))
            EXPECT_TRUE(std::filesystem::is_empty(*files.insert(sFile.c_str()).first));
        else
            EXPECT_EQ(string("before"), sFile);
    }
    ASSERT_EQ(2U, files.size());
    EXPECT_EQ(folder / L"new", files.begin()->parent_path());
    EXPECT_EQ(L"TOL", files.begin()->filename().wstring().substr(0, 3));
}

} // namespace
