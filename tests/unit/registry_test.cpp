#include <algorithm>
#include <cstring>
#include <iterator>
#include <sstream>

#include <gtest/gtest.h>

#include <support/files.h>
#include <support/golden.h>
#include <support/import_patch.h>
#include <support/noted_calls.h>
#include <support/printers.h>
#include <support/registry/registry.h>
#include <support/registry_scope.h>
#include <support/resources.h>

using namespace testing_support;
using velmor::string;

namespace
{

const wchar_t* const KEY = L"ZelkTest\\Inner";

RegistryData Raw(DWORD dwType, std::wstring_view sUnits, std::size_t bytes)
{
    const std::wstring sWhole(sUnits);
    const auto* pBytes = reinterpret_cast<const BYTE*>(sWhole.data());
    return {dwType, {pBytes, pBytes + bytes}};
}

/// The real registry below a key of its own. Every handle is closed at the end.
class Registry : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        string sText; // the platform opens some handles once and for all
        velmor::Registry_System().SetString(KEY, L"v", L"warm");
        velmor::Registry_Software().GetString(KEY, L"v", sText);
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SYSTEM\\ZelkTest");
    }
    ~Registry() override { EXPECT_EQ(handles, CountHandles()); }

    unsigned int handles = CountHandles();
    const velmor::Registry_System system;
};

TEST_F(Registry, WritesToTheByte)
{
    const RegistryKeyScope key(L"SYSTEM\\ZelkTest"), software(L"SOFTWARE\\ZelkTest");
    Golden golden;
    for (const std::wstring& sText : {std::wstring(), std::wstring(L"\x65E5 and more"), std::wstring(300, L'l')})
    {
        EXPECT_TRUE(system.SetString(KEY, L"v", string(sText)));
        golden.Line(key.Get(L"Inner", L"v"));
    }
    EXPECT_TRUE(system.SetDword(KEY, L"v", 0x80000001));
    golden.Line(key.Get(L"Inner", L"v"));
    for (const std::vector<string>& list : {std::vector<string>{L"a", L"bc"}, {}})
    {
        EXPECT_TRUE(system.SetMultiString(KEY, L"v", list));
        golden.Line(key.Get(L"Inner", L"v"));
    }

    EXPECT_TRUE(velmor::Registry_Software().SetDword(L"ZelkTest\\b", L"d", 1));
    golden.Line(software.Get(L"b", L"d"));
}

/// A question is the type, the number of bytes and the text of a value, with "|" for its zeroes.
TEST_F(Registry, ReadsWhateverLiesThere)
{
    const RegistryKeyScope key(L"SYSTEM\\ZelkTest");
    string sText;
    ExpectTranscript([&](const std::string& sQuestion) {
        std::istringstream words(sQuestion);
        DWORD dwType = 0;
        std::size_t bytes = 0;
        words >> dwType >> bytes >> std::ws;
        std::wstring sUnits(std::istreambuf_iterator<char>(words), {});
        std::ranges::replace(sUnits, L'|', L'\0');
        key.Set(L"Inner", L"v", Raw(dwType, sUnits, bytes));
        sText = L"before";
        DWORD dwValue = 99;
        std::vector<string> values = {L"before"};
        const bool bText = system.GetString(KEY, L"v", sText);
        const bool bNumber = system.GetDword(KEY, L"v", dwValue);
        const bool bList = system.GetMultiString(KEY, L"v", values);
        return Show(bText, sText, bNumber, dwValue, bList, values) + '\n';
    });
    const std::wstring sLong(40000, L'x');
    key.Set(L"Inner", L"v", StringData(sLong));
    EXPECT_TRUE(system.GetString(KEY, L"v", sText));
    EXPECT_EQ(string(sLong), sText);
    EXPECT_FALSE(system.GetString(KEY, L"missing", sText));
    EXPECT_FALSE(system.GetString(L"ZelkTest\\Missing", L"v", sText));
    EXPECT_FALSE(velmor::Registry_Software().GetString(KEY, L"v", sText)) << "another hive";
}

TEST_F(Registry, ATextThatChangesWhileItIsRead)
{
    const RegistryKeyScope key(L"SYSTEM\\ZelkTest");
    for (const RegistryData& changed :
         {StringData(L"longer"), StringData(L"sho"), StringData(L""), Raw(REG_EXPAND_SZ, L"five", 5 * sizeof(wchar_t))})
    {
        key.Set(L"Inner", L"v", StringData(L"four"));
        const auto query = PATCH_IMPORT(RegQueryValueExW, [&](auto original, HKEY hKey, const wchar_t* pszName, DWORD*,
                                                              DWORD* pType, BYTE* pData, DWORD* pSize) {
            if (pData != nullptr)
                key.Set(L"Inner", L"v", changed);
            return original(hKey, pszName, nullptr, pType, pData, pSize);
        });
        string sText = L"before";
        EXPECT_FALSE(system.GetString(KEY, L"v", sText)) << testing::PrintToString(changed);
        EXPECT_EQ(string(L"before"), sText);
    }
}

TEST_F(Registry, EnumerationEndsAtANameThatIsTooLong)
{
    const RegistryKeyScope key(L"SYSTEM\\ZelkTest");
    std::vector<string> names = {L"kept"};
    EXPECT_TRUE(system.EnumerateKeys(L"SYSTEM\\ZelkTest", names));
    EXPECT_EQ(1U, names.size());
    const std::wstring sLongest(254, L'b');
    for (const std::wstring& sName : {std::wstring(L"a"), sLongest, std::wstring(L"d")})
        key.Set(sName, L"v", DwordData(0));
    EXPECT_TRUE(system.EnumerateKeys(L"SYSTEM\\ZelkTest", names));
    EXPECT_EQ((std::vector<string>{L"kept", L"a", string(sLongest), L"d"}), names);

    key.Set(std::wstring(255, L'c'), L"v", DwordData(0));
    names.clear();
    EXPECT_TRUE(velmor::Registry_Software().EnumerateKeys(L"SYSTEM\\ZelkTest", names)) << "the path is a full one";
    EXPECT_EQ((std::vector<string>{L"a", string(sLongest)}), names);
    EXPECT_FALSE(system.EnumerateKeys(L"ZelkTest", names));
}

/// The platform as the unloading of a mounted hive sees it.
struct MountedHive
{
    std::wstring sMountKey;
    NotedCalls calls;
    TempDirectory folder;
    ImportPatches patches;

    static HANDLE Token() { return reinterpret_cast<HANDLE>(0x70); }
    static HKEY Key() { return reinterpret_cast<HKEY>(0x60); }
    [[nodiscard]] std::string Log() const { return ReadFileBytes(folder / L"registry.log"); }

    MountedHive()
    {
        ReplaceKeys();
        ReplacePrivileges();
        ADD_PATCH(patches, CreateFileW,
                  [this](auto original, const wchar_t* pszPath, DWORD dwAccess, DWORD dwShare, auto... others) {
                      EXPECT_STREQ(L"X:\\Program Files\\velmor\\ZELK\\Logfiles\\registry.log", pszPath);
                      EXPECT_EQ(DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE}, dwShare);
                      return original((folder / L"registry.log").c_str(), dwAccess, dwShare, others...);
                  });
    }
    void ReplaceKeys()
    {
        ADD_PATCH(patches, RegOpenKeyExW,
                  [this](HKEY hRoot, const wchar_t* pszPath, DWORD, REGSAM access, HKEY* pKey) -> LSTATUS {
                      EXPECT_TRUE(hRoot == HKEY_LOCAL_MACHINE && access == KEY_READ);
                      if (pszPath != sMountKey || !calls.Allow("key"))
                          return ERROR_FILE_NOT_FOUND;
                      *pKey = Key();
                      return ERROR_SUCCESS;
                  });
        ADD_PATCH(patches, RegCloseKey, [this](HKEY hKey) -> LSTATUS {
            EXPECT_EQ(Key(), hKey);
            calls.Note("close");
            return ERROR_SUCCESS;
        });
        ADD_PATCH(patches, RegUnLoadKeyW, [this](HKEY, const wchar_t* pszPath) -> LSTATUS {
            return calls.Allow("UNLOAD", pszPath) ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
        });
    }
    void ReplacePrivileges()
    {
        ADD_PATCH(patches, OpenProcessToken, [this](HANDLE, DWORD dwAccess, HANDLE* pToken) -> BOOL {
            const bool bAllowed = calls.Allow("token for", dwAccess);
            *pToken = bAllowed ? Token() : nullptr;
            return bAllowed;
        });
        ADD_PATCH(patches, CloseHandle, [this](auto original, HANDLE handle) -> BOOL {
            if (handle != Token())
                return original(handle);
            calls.Note("close the token");
            return TRUE;
        });
        ADD_PATCH(patches, LookupPrivilegeValueW, [this](const wchar_t*, const wchar_t* pszName, LUID* pLuid) -> BOOL {
            pLuid->LowPart = static_cast<DWORD>(std::wcslen(pszName));
            return calls.Allow("look up", pszName);
        });
        ADD_PATCH(patches, AdjustTokenPrivileges,
                  [this](HANDLE hToken, BOOL bAll, TOKEN_PRIVILEGES* pNew, DWORD, TOKEN_PRIVILEGES* pPrevious,
                         DWORD*) -> BOOL {
                      EXPECT_TRUE(hToken == Token() && !bAll);
                      const auto& [luid, dwAttributes] = pNew->Privileges[0];
                      const bool bAllowed =
                          calls.Allow("adjust", pNew->PrivilegeCount, "of", luid.LowPart, "to", dwAttributes);
                      if (bAllowed)
                          ::SetLastError(ERROR_NOT_ALL_ASSIGNED);
                      if (pPrevious != nullptr)
                          *pPrevious = {1, {{luid, 0}}};
                      return bAllowed;
                  });
    }
};

TEST(MountedHives, AreUnloadedByTheDestruction)
{
    Golden golden;
    for (int refused = 0, made = 0; refused <= made; ++refused)
        for (const bool bSystem : {true, false})
        {
            MountedHive hive;
            hive.sMountKey =
                bSystem ? L"{D0B3D3F4-05F2-4671-80D5-B569ABD77343}\\" : L"{72000DEF-16EA-418f-99F7-40C42BBC5C22}\\";
            hive.calls.refused = refused;
            if (bSystem)
                velmor::Registry_System();
            else
                velmor::Registry_Software();
            golden.Line("== refused: call", refused);
            golden.Line(hive.calls.sNotes + hive.Log());
            made = std::max(made, hive.calls.made);
        }
}

} // namespace
