#include "system/module_file.h"

#include <winsock2.h>

#include <windows.h>

#include "system/system_error.h"

namespace zelkctl
{

std::wstring ModuleFile(const wchar_t* pszModule)
{
    constexpr std::size_t LONGEST_PATH = 32768;
    std::wstring path(LONGEST_PATH, L'\0');
    const HMODULE hModule = ::GetModuleHandleW(pszModule);
    const DWORD dwLength = ::GetModuleFileNameW(hModule, path.data(), static_cast<DWORD>(path.size()));
    if (dwLength == 0 || dwLength == path.size())
        throw SystemError("finding the tool's own files");
    path.resize(dwLength);
    return path;
}

} // namespace zelkctl
