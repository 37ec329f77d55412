#pragma once

#include <map>
#include <string>

#include <gtest/gtest.h>

#include <support/import_patch.h>
#include <support/registry/environment.h>

/// A made-up Windows for the environment detection, which starts from nothing; at the end the real one is detected
/// again.
class FakeWindows
{
public:
    using Values = std::map<std::wstring, std::wstring>;

    FakeWindows(DWORD dwMajor, DWORD dwMinor, BYTE productType) : major(dwMajor), minor(dwMinor), type(productType)
    {
        Forget();
        PatchVersion();
        PatchRegistry();
        PatchEdition();
    }
    ~FakeWindows() { EXPECT_EQ(0, open) << "keys left open"; }
    FakeWindows(const FakeWindows&) = delete;
    FakeWindows& operator=(const FakeWindows&) = delete;

    static void Forget() { const_cast<WindowsEnvironment&>(GetDetectedEnvironment()) = {}; }

    static constexpr const wchar_t* VERSION_KEY = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    static constexpr const wchar_t* MININT_KEY = L"SYSTEM\\CurrentControlSet\\Control\\MiniNT";

    DWORD major, minor;
    BYTE type;
    std::map<std::wstring, Values> keys; ///< below HKEY_LOCAL_MACHINE; all values are texts
    DWORD dwWow64Error = 0;
    bool bVersionW = true, bVersionA = true, bProductInfo = true;
    std::wstring sProdspec;
    int open = 0;
    int detections = 0;
    std::string sProductInfoArguments;

private:
    struct DetectAgain
    {
        ~DetectAgain()
        {
            Forget();
            DetectWindowsEnvironment();
        }
    };
    static inline FakeWindows* pCurrent = nullptr;

    static BOOL WINAPI ProductInfo(DWORD a, DWORD b, DWORD c, DWORD d, DWORD*)
    {
        for (const DWORD number : {a, b, c, d})
            pCurrent->sProductInfoArguments += std::to_string(number) + ' ';
        return TRUE;
    }
    void PatchVersion();
    void PatchRegistry();
    void PatchEdition();

    DetectAgain m_again; // its end comes when nothing is faked any more
    testing_support::ImportPatches m_patches;
};

inline void FakeWindows::PatchVersion()
{
    ADD_PATCH(m_patches, GetVersionExW, [this](OSVERSIONINFOW* p) -> BOOL {
        ++detections;
        auto& record = *reinterpret_cast<OSVERSIONINFOEXW*>(p);
        EXPECT_EQ(284U, record.dwOSVersionInfoSize);
        record.dwMajorVersion = major;
        record.dwMinorVersion = minor;
        record.wProductType = type;
        return bVersionW;
    });
    ADD_PATCH(m_patches, GetVersionExA, [this](OSVERSIONINFOA* p) -> BOOL {
        EXPECT_EQ(156U, p->dwOSVersionInfoSize);
        return bVersionA;
    });
    ADD_PATCH(m_patches, GetSystemWow64DirectoryW, [this](wchar_t*, UINT) -> UINT {
        ::SetLastError(dwWow64Error);
        return dwWow64Error == 0 ? 20 : 0;
    });
}

inline void FakeWindows::PatchRegistry()
{
    ADD_PATCH(m_patches, RegOpenKeyExW, [this](HKEY, const wchar_t* pszPath, DWORD, REGSAM, HKEY* pKey) -> LSTATUS {
        const auto found = keys.find(pszPath);
        if (found == keys.end())
            return ERROR_FILE_NOT_FOUND;
        ++open;
        *pKey = reinterpret_cast<HKEY>(&found->second);
        return ERROR_SUCCESS;
    });
    ADD_PATCH(m_patches, RegQueryValueExW,
              [](HKEY hKey, const wchar_t* pszName, DWORD*, DWORD* pType, BYTE* pData, DWORD* pSize) -> LSTATUS {
                  const auto& values = *reinterpret_cast<const Values*>(hKey);
                  const auto found = values.find(pszName);
                  if (found == values.end())
                      return ERROR_FILE_NOT_FOUND;
                  *pType = REG_SZ;
                  *pSize = static_cast<DWORD>((found->second.size() + 1) * sizeof(wchar_t));
                  if (pData != nullptr)
                      std::copy_n(reinterpret_cast<const BYTE*>(found->second.c_str()), *pSize, pData);
                  return ERROR_SUCCESS;
              });
    ADD_PATCH(m_patches, RegCloseKey, [this](HKEY) -> LSTATUS {
        --open;
        return ERROR_SUCCESS;
    });
}

/// Where the edition of Windows is told: by the platform, and in the file prodspec.ini.
inline void FakeWindows::PatchEdition()
{
    ADD_PATCH(m_patches, GetProcAddress, [this](auto original, HMODULE hModule, const char* pszName) -> FARPROC {
        pCurrent = this;
        if (std::string("GetProductInfo") != pszName)
            return original(hModule, pszName);
        return bProductInfo ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&ProductInfo)) : nullptr;
    });
    ADD_PATCH(m_patches, GetSystemDirectoryW, [](wchar_t* pszText, UINT) -> UINT {
        std::wcscpy(pszText, L"S:\\sys");
        return 6;
    });
    ADD_PATCH(m_patches, GetPrivateProfileStringW,
              [this](auto original, const wchar_t* pszSection, const wchar_t* pszKey, const wchar_t* pszDefault,
                     wchar_t* pszText, DWORD dwSize, const wchar_t* pszFile) -> DWORD {
                  if (std::wstring(pszFile) != L"S:\\sys\\prodspec.ini")
                      return original(pszSection, pszKey, pszDefault, pszText, dwSize, pszFile);
                  EXPECT_STREQ(L"Product Specification", pszSection);
                  EXPECT_STREQ(L"Product", pszKey);
                  std::wcscpy(pszText, sProdspec.empty() ? pszDefault : sProdspec.c_str());
                  return static_cast<DWORD>(std::wcslen(pszText));
              });
}
