#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

#include <support/platform/module_path.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>
#include <zelk_nm_build_stamp.h>

namespace
{

constexpr const wchar_t* OWN_FILE_NAME = L"ZELK_NM.DLL";

/// One entry of a version resource's "\VarFileInfo\Translation".
struct Translation
{
    WORD wLanguage;
    WORD wCodePage;
};

std::wstring Description()
{
    constexpr std::size_t LONGEST_DESCRIPTION = 99;
    std::string sDescription =
        "Velmor Network Library (TOLVQ) created on " ZELK_NM_BUILD_DATE " at " ZELK_NM_BUILD_TIME;
    return std::wstring(sDescription.begin(), sDescription.end()).substr(0, LONGEST_DESCRIPTION);
}

bool ReadVersionResource(const CallFrame& frame, const velmor::string& sPath, std::vector<BYTE>& resource)
{
    DWORD dwHandle = 0;
    const DWORD dwSize = ::GetFileVersionInfoSizeW(sPath.c_str(), &dwHandle);
    if (dwSize == 0)
        return frame.Fail("GetFileVersionInfoSize failed", "dwLastError", ::GetLastError());
    resource.resize(dwSize);
    if (!::GetFileVersionInfoW(sPath.c_str(), 0, dwSize, resource.data()))
        return frame.Fail("GetFileVersionInfo failed", "dwLastError", ::GetLastError());
    return true;
}

template <class T>
bool QueryVersionValue(const CallFrame& frame, const std::vector<BYTE>& resource, const wchar_t* pszSubBlock,
                       UINT smallest, const T*& pValue, UINT& count)
{
    void* pFound = nullptr;
    if (!::VerQueryValueW(resource.data(), pszSubBlock, &pFound, &count) || pFound == nullptr || count < smallest)
        return frame.FailAs("VerQueryValue failed", "dwLastError", ::GetLastError());
    pValue = static_cast<const T*>(pFound);
    return true;
}

bool ReadFileVersion(const CallFrame& frame, const std::vector<BYTE>& resource, velmor::string& sVersion)
{
    const Translation* pTranslation = nullptr;
    UINT bytes = 0;
    if (!QueryVersionValue(frame, resource, L"\\VarFileInfo\\Translation", sizeof(Translation), pTranslation, bytes))
        return false;

    char subBlock[64];
    std::snprintf(subBlock, std::size(subBlock), "\\StringFileInfo\\%4.4X%4.4X\\FileVersion", pTranslation->wLanguage,
                  pTranslation->wCodePage);
    // Of a text the size is told in characters; the terminator need not be among them.
    const wchar_t* pszVersion = nullptr;
    UINT characters = 0;
    if (!QueryVersionValue(frame, resource, velmor::string(subBlock).c_str(), 0, pszVersion, characters))
        return false;
    sVersion = velmor::string(pszVersion, ::wcsnlen(pszVersion, characters));
    return true;
}

/// Keeps the version of every module asked about in the product's version log. A missing directory is no failure.
void RecordVersion(const velmor::string& sDllName, const velmor::string& sVersion)
{
    velmor::string sLogDir;
    if (TOLVA::GetLogDir(sLogDir))
        ::WritePrivateProfileStringW(sDllName.c_str(), L"Version", sVersion.c_str(),
                                     (sLogDir + L"\\Version.log").c_str());
}

bool FindVersion(const CallFrame& frame, const velmor::string& sDllName, velmor::string& sVersion)
{
    if (sDllName.empty())
        return frame.Fail("Empty DLL name parameter");

    sVersion = L"Error";
    const HMODULE hModule = ::GetModuleHandleW(sDllName.c_str());
    if (hModule == nullptr)
        return frame.Fail("NULL module");
    velmor::string sPath;
    DWORD dwLastError = ERROR_SUCCESS;
    if (!velmor::GetModulePath(hModule, sPath, dwLastError))
        return frame.Fail("GetModuleFileNameW failed", "dwLastError", dwLastError);
    std::vector<BYTE> resource;
    if (!ReadVersionResource(frame, sPath, resource))
        return false;

    // A resource without the value is recorded too, as "Error".
    ReadFileVersion(frame, resource, sVersion);
    RecordVersion(sDllName, sVersion);
    return frame.Succeed();
}

} // namespace

unsigned int TOLVA::GetModuleProperty(TOLVA_GMP_CAT cat, velmor::string& value)
try
{
    switch (cat)
    {
    case TOLVA_GMP_DESCRIPTION: value = Description(); return 0;
    case TOLVA_GMP_VERSION: GetResourceVersionStr(OWN_FILE_NAME, value); return 0;
    }
    return 1;
}
catch (...)
{
    return 1;
}

void TOLVA::GetResourceVersionStr(const velmor::string& sDllName, velmor::string& sVersion)
{
    RunOperation("TOLVA::GetResourceVersionStr", [&](const CallFrame& frame) {
        // The caller may have passed one string for both. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
        const velmor::string sName = sDllName;
        return FindVersion(frame, sName, sVersion);
    });
}
