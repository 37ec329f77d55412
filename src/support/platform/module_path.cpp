#include <support/platform/module_path.h>

#include <vector>

namespace velmor
{
namespace
{

constexpr DWORD PATH_STEP = 260;
constexpr DWORD LONGEST_PATH = 32768;

} // namespace

bool GetModulePath(HMODULE hModule, velmor::string& sPath, DWORD& dwLastError)
{
    for (DWORD size = PATH_STEP; size <= LONGEST_PATH; size += PATH_STEP)
    {
        std::vector<wchar_t> buffer(size);
        // Success is judged by the last error too, and the call does not clear it.
        ::SetLastError(ERROR_SUCCESS);
        const DWORD length = ::GetModuleFileNameW(hModule, buffer.data(), size);
        dwLastError = ::GetLastError();
        // Systems before Vista cut a long path short without an error.
        const bool bTooSmall = dwLastError == ERROR_INSUFFICIENT_BUFFER || length >= size;
        if (length != 0 && bTooSmall)
            continue;
        if (length == 0 || dwLastError != ERROR_SUCCESS)
            return false;
        sPath = velmor::string(buffer.data(), length);
        return true;
    }
    return false;
}

velmor::string DirectoryOf(velmor::string sPath)
{
    const std::size_t position = sPath.rfind(L'\\');
    if (position != velmor::string::npos)
        sPath.erase(position);
    return sPath;
}

velmor::string ReadProfileText(const wchar_t* pszSection, const wchar_t* pszKey, const velmor::string& sDefault,
                               const velmor::string& sFile)
{
    wchar_t text[260];
    const DWORD length =
        ::GetPrivateProfileStringW(pszSection, pszKey, sDefault.c_str(), text, std::size(text), sFile.c_str());
    return velmor::string(text, length);
}

} // namespace velmor
