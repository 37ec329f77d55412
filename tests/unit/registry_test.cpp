#include <cstring>

#include <gtest/gtest.h>

#include <support/files.h>
#include <support/golden.h>
#include <support/import_patch.h>
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
    const RegistryKeyScope key(L"SYSTEM\\ZelkTest");
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

    const auto create = PATCH_IMPORT(RegCreateKeyExW,
                                     [&](HKEY hRoot, const wchar_t* pszPath, DWORD, wchar_t*, DWORD dwOptions,
                                         REGSAM access, SECURITY_ATTRIBUTES* pSecurity, HKEY*, DWORD*) -> LSTATUS {
                                         EXPECT_EQ(HKEY_LOCAL_MACHINE, hRoot);
                                         EXPECT_STREQ(L"SOFTWARE\\a\\b", pszPath);
                                         EXPECT_TRUE(dwOptions == 0 && access == 0x2001F && pSecurity == nullptr);
                                         return ERROR_ACCESS_DENIED;
                                     });
    EXPECT_FALSE(velmor::Registry_Software().SetDword(L"a\\b", L"d", 1));
}

TEST_F(Registry, ARefusedWriteFails)
{
    const RegistryKeyScope key(L"SYSTEM\\ZelkTest");
    const auto set = PATCH_IMPORT(RegSetValueExW, [](auto...) -> LSTATUS { return ERROR_DISK_FULL; });
    EXPECT_FALSE(system.SetDword(KEY, L"d", 1));
}

const RegistryData ANYTHING[] = {StringData(L"plain"),
                                 StringData(L""),
                                 Raw(REG_SZ, L"", 0),
                                 Raw(REG_SZ, L"noend", 10),
                                 Raw(REG_SZ, L"odd", 5),
                                 Raw(REG_SZ, L"x", 1),
                                 Raw(REG_SZ, {L"cut\0off", 7}, 14),
                                 StringData(std::wstring(40000, L'x')),
                                 StringData(L"%PATH%", REG_EXPAND_SZ),
                                 StringData(L"bytes", REG_BINARY),
                                 DwordData(7),
                                 Raw(REG_DWORD, L"\x7", 2),
                                 Raw(REG_DWORD, L"\x7", 0),
                                 Raw(REG_DWORD, L"\x7____", 8),
                                 Raw(REG_BINARY, {L"\x7\0", 2}, 4),
                                 Raw(REG_MULTI_SZ, {L"a\0bc\0", 6}, 12),
                                 Raw(REG_MULTI_SZ, L"", 2),
                                 Raw(REG_MULTI_SZ, L"", 0),
                                 Raw(REG_MULTI_SZ, {L"a\0bc", 4}, 8),
                                 Raw(REG_MULTI_SZ, {L"a\0bcd", 5}, 9),
                                 Raw(REG_MULTI_SZ, {L"a\0\0b\0", 6}, 12),
                                 Raw(REG_MULTI_SZ, {L"\0a\0\0", 5}, 8),
                                 Raw(REG_MULTI_SZ, {L"\0", 2}, 4)};

TEST_F(Registry, ReadsWhateverLiesThere)
{
    const RegistryKeyScope key(L"SYSTEM\\ZelkTest");
    Golden golden;
    string sText;
    for (const RegistryData& data : ANYTHING)
    {
        key.Set(L"Inner", L"v", data);
        sText = L"before";
        DWORD dwValue = 99;
        std::vector<string> values = {L"before"};
        const bool bText = system.GetString(KEY, L"v", sText);
        const bool bNumber = system.GetDword(KEY, L"v", dwValue);
        const bool bList = system.GetMultiString(KEY, L"v", values);
        const std::string sShown = sText.size() > 999 ? Show(sText.size(), "characters") : Show(sText);
        golden.Line("type", data.dwType, "bytes", data.bytes.size(), ":", bText, sShown, bNumber, dwValue, bList,
                    values);
    }
    EXPECT_FALSE(system.GetString(KEY, L"missing", sText));
    EXPECT_FALSE(system.GetString(L"ZelkTest\\Missing", L"v", sText));
    EXPECT_FALSE(velmor::Registry_Software().GetString(KEY, L"v", sText)) << "another hive";
}

TEST_F(Registry, ATextThatChangesWhileItIsRead)
{
    const RegistryKeyScope key(L"SYSTEM\\ZelkTest");
    key.Set(L"Inner", L"v", StringData(L"four"));
    for (const wchar_t* pszChanged : {L"longer", L"sho", L""})
    {
        const auto query = PATCH_IMPORT(RegQueryValueExW, [&](auto original, HKEY hKey, const wchar_t* pszName, DWORD*,
                                                              DWORD* pType, BYTE* pData, DWORD* pSize) {
            if (pData != nullptr)
                key.Set(L"Inner", L"v", StringData(pszChanged));
            return original(hKey, pszName, nullptr, pType, pData, pSize);
        });
        string sText = L"before";
        EXPECT_FALSE(system.GetString(KEY, L"v", sText)) << testing::PrintToString(pszChanged);
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

    for (const LSTATUS code : {LSTATUS{ERROR_ACCESS_DENIED}, LSTATUS{ERROR_KEY_DELETED}, LSTATUS{-1}})
    {
        names.clear();
        const auto walk =
            PATCH_IMPORT(RegEnumKeyExW, [=](HKEY, DWORD dwIndex, wchar_t* pszName, DWORD* pLength, auto...) -> LSTATUS {
                EXPECT_EQ(255U, *pLength);
                std::wcscpy(pszName, L"name");
                *pLength = 4;
                return dwIndex < 2 ? 0 : code;
            });
        EXPECT_TRUE(system.EnumerateKeys(L"SYSTEM\\ZelkTest", names));
        EXPECT_EQ(2U, names.size()) << code;
    }
}

/// The platform as the unloading of a mounted hive sees it; every call leaves its mark in `sCalls`.
struct MountedHive
{
    std::wstring sMountKey;
    int failingOpen = 0, failingAdjust = 0; ///< which call of its kind fails, counted from 1
    bool bLookup = true;
    LSTATUS unload = 0;
    std::string sCalls;
    int opens = 0, adjusts = 0;
    TempDirectory folder;
    ImportPatches patches;

    static HANDLE Token() { return reinterpret_cast<HANDLE>(0x70); }
    static HKEY Key() { return reinterpret_cast<HKEY>(0x60); }
    static BOOL Answer(bool bFails, DWORD dwError)
    {
        ::SetLastError(dwError);
        return !bFails;
    }
    [[nodiscard]] std::string Log() const { return ReadFileBytes(folder / L"registry.log"); }

    MountedHive()
    {
        ReplaceKeys();
        ReplaceToken();
        ReplacePrivileges();
    }
    void ReplaceKeys()
    {
        ADD_PATCH(patches, RegOpenKeyExW,
                  [this](HKEY hRoot, const wchar_t* pszPath, DWORD, REGSAM access, HKEY* pKey) -> LSTATUS {
                      EXPECT_TRUE(hRoot == HKEY_LOCAL_MACHINE && access == KEY_READ);
                      if (pszPath != sMountKey)
                          return ERROR_FILE_NOT_FOUND;
                      sCalls += "key ";
                      *pKey = Key();
                      return 0;
                  });
        ADD_PATCH(patches, RegCloseKey, [this](HKEY hKey) -> LSTATUS {
            EXPECT_EQ(Key(), hKey);
            sCalls += "close ";
            return 0;
        });
        ADD_PATCH(patches, RegUnLoadKeyW, [this](HKEY, const wchar_t* pszPath) -> LSTATUS {
            EXPECT_EQ(sMountKey, pszPath);
            sCalls += "UNLOAD ";
            return unload;
        });
    }
    void ReplaceToken()
    {
        ADD_PATCH(patches, CreateFileW,
                  [this](auto original, const wchar_t* pszPath, DWORD dwAccess, DWORD dwShare,
                         SECURITY_ATTRIBUTES* pSecurity, DWORD dwMode, DWORD dwFlags, HANDLE hTemplate) {
                      EXPECT_STREQ(L"X:\\Program Files\\velmor\\ZELK\\Logfiles\\registry.log", pszPath);
                      EXPECT_EQ(DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE}, dwShare);
                      const std::filesystem::path log = folder / L"registry.log";
                      return original(log.c_str(), dwAccess, dwShare, pSecurity, dwMode, dwFlags, hTemplate);
                  });
        ADD_PATCH(patches, OpenProcessToken, [this](HANDLE, DWORD dwAccess, HANDLE* pToken) -> BOOL {
            EXPECT_EQ(0x28U, dwAccess);
            const bool bFails = ++opens == failingOpen;
            *pToken = bFails ? nullptr : Token();
            sCalls += bFails ? "" : "(";
            return Answer(bFails, 5);
        });
        ADD_PATCH(patches, CloseHandle, [this](auto original, HANDLE handle) -> BOOL {
            if (handle != Token())
                return original(handle);
            sCalls += ") ";
            return TRUE;
        });
    }
    void ReplacePrivileges()
    {
        ADD_PATCH(patches, LookupPrivilegeValueW,
                  [this](const wchar_t* pszSystem, const wchar_t* pszName, LUID* pLuid) -> BOOL {
                      EXPECT_EQ(nullptr, pszSystem);
                      const bool bRestore = std::wcscmp(pszName, L"SeRestorePrivilege") == 0;
                      EXPECT_TRUE(bRestore || std::wcscmp(pszName, L"SeBackupPrivilege") == 0);
                      sCalls += bRestore ? 'r' : 'b';
                      pLuid->LowPart = bRestore ? 18 : 17;
                      return Answer(!bLookup, 1313);
                  });
        ADD_PATCH(patches, AdjustTokenPrivileges,
                  [this](HANDLE hToken, BOOL bAll, TOKEN_PRIVILEGES* pNew, DWORD, TOKEN_PRIVILEGES* pPrevious,
                         DWORD*) -> BOOL {
                      EXPECT_TRUE(hToken == Token() && !bAll && pNew->PrivilegeCount == 1);
                      if (++adjusts == failingAdjust)
                          return Answer(true, 87);
                      const LUID_AND_ATTRIBUTES& privilege = pNew->Privileges[0];
                      sCalls += std::to_string(privilege.Luid.LowPart) + (privilege.Attributes == 2 ? "+" : "-");
                      if (pPrevious != nullptr)
                      {
                          *pPrevious = *pNew;
                          pPrevious->Privileges[0].Attributes = 0;
                      }
                      return Answer(false, ERROR_NOT_ALL_ASSIGNED);
                  });
    }
};

TEST(MountedHives, AreUnloadedByTheDestruction)
{
    const struct
    {
        int failingOpen = 0, failingAdjust = 0;
        bool bLookup = true;
        LSTATUS unload = 0;
    } rows[] = {{},
                {.unload = 5},
                {.bLookup = false},
                {.failingOpen = 1},
                {.failingAdjust = 1},
                {.failingOpen = 2},
                {.failingAdjust = 2},
                {.failingOpen = 3},
                {.failingAdjust = 4}};
    Golden golden;
    for (const auto& row : rows)
        for (const bool bSystem : {true, false})
        {
            MountedHive hive;
            hive.sMountKey =
                bSystem ? L"{D0B3D3F4-05F2-4671-80D5-B569ABD77343}\\" : L"{72000DEF-16EA-418f-99F7-40C42BBC5C22}\\";
            hive.failingOpen = row.failingOpen;
            hive.failingAdjust = row.failingAdjust;
            hive.bLookup = row.bLookup;
            hive.unload = row.unload;
            if (bSystem)
                velmor::Registry_System();
            else
                velmor::Registry_Software();
            golden.Line("== failing: open", row.failingOpen, "adjust", row.failingAdjust, "lookup", !row.bLookup,
                        "unload", row.unload);
            golden.Line(hive.sCalls);
            golden.Line(hive.Log());
        }
}

TEST(MountedHives, WithoutOneNothingHappens)
{
    MountedHive hive;
    velmor::Registry_System();
    velmor::Registry_Software();
    EXPECT_EQ("", hive.sCalls);
    EXPECT_FALSE(std::filesystem::exists(hive.folder / L"registry.log"));
}

} // namespace
