#include "system/command_search.h"

#include <cstdlib>
#include <string>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{

void SearchSystemDirectoryFirst()
{
    wchar_t directory[MAX_PATH] = {};
    ::GetSystemDirectoryW(directory, MAX_PATH);
    ::SetCurrentDirectoryW(directory);
    const wchar_t* const pszPath = ::_wgetenv(L"PATH");
    // The run time has a copy of the environment, from which the library's commands are looked for.
    ::_wputenv((std::wstring(L"PATH=") + directory + L';' + (pszPath != nullptr ? pszPath : L"")).c_str());
}

} // namespace zelkctl
