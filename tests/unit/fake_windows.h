#pragma once

#include <string>

#include <gtest/gtest.h>

#include <support/files.h>
#include <support/import_patch.h>
#include <support/registry/environment.h>

/// A made-up Windows for the environment detection, which starts from nothing; at the end the real one is detected
/// again.
class FakeWindows
{
public:
    FakeWindows(DWORD dwMajor, DWORD dwMinor, BYTE productType) : major(dwMajor), minor(dwMinor), type(productType)
    {
        Forget();
        PatchVersion();
        PatchEdition();
        HKEY hRoot = nullptr;
        EXPECT_EQ(0, ::RegCreateKeyW(HKEY_CURRENT_USER, REGISTRY, &hRoot));
        EXPECT_EQ(0, ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, hRoot));
        ::RegCloseKey(hRoot);
    }
    ~FakeWindows()
    {
        ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        ::RegDeleteTreeW(HKEY_CURRENT_USER, REGISTRY);
    }

    /// Makes a key below HKEY_LOCAL_MACHINE, of this process alone, with a text.
    static void Set(const std::wstring& sKey, const wchar_t* pszName = nullptr, const std::wstring& sText = {})
    {
        ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, sKey.c_str(), pszName, REG_SZ, sText.c_str(),
                          static_cast<DWORD>((sText.size() + 1) * sizeof(wchar_t)));
    }
    static void Forget() { const_cast<WindowsEnvironment&>(GetDetectedEnvironment()) = {}; }

    static constexpr const wchar_t* VERSION_KEY = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    static constexpr const wchar_t* MININT_KEY = L"SYSTEM\\CurrentControlSet\\Control\\MiniNT";

    DWORD major, minor;
    BYTE type;
    DWORD dwWow64Error = 0;
    bool bVersionW = true, bVersionA = true, bProductInfo = true;
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
    static constexpr const wchar_t* REGISTRY = L"Software\\zelk_fake_windows";
    static inline FakeWindows* pCurrent = nullptr;

    static BOOL WINAPI ProductInfo(DWORD a, DWORD b, DWORD c, DWORD d, DWORD*)
    {
        for (const DWORD number : {a, b, c, d})
            pCurrent->sProductInfoArguments += std::to_string(number) + ' ';
        return TRUE;
    }
    void PatchVersion();
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

/// Where the edition of Windows is told: by the platform, and in a file prodspec.ini beside the program.
inline void FakeWindows::PatchEdition()
{
    ADD_PATCH(m_patches, GetProcAddress, [this](auto original, HMODULE hModule, const char* pszName) -> FARPROC {
        pCurrent = this;
        if (std::string("GetProductInfo") != pszName)
            return original(hModule, pszName);
        return bProductInfo ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&ProductInfo)) : nullptr;
    });
    ADD_PATCH(m_patches, GetSystemDirectoryW, [](wchar_t* pszText, UINT) -> UINT {
        const std::wstring sFolder = testing_support::BesideProgram(L"").parent_path().wstring();
        std::wcscpy(pszText, sFolder.c_str());
        return static_cast<UINT>(sFolder.size());
    });
}
