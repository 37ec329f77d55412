#include "system/file_search.h"

#include <algorithm>

#include "system/handles.h"

namespace zelkctl
{

std::vector<std::wstring> FindFiles(const std::wstring& sPath)
{
    const std::wstring sFolder = sPath.substr(0, sPath.find_last_of(L"\\/:") + 1);
    if (sPath.find_first_of(L"*?", sFolder.size()) == std::wstring::npos)
        return {sPath};
    std::vector<std::wstring> files;
    WIN32_FIND_DATAW found = {};
    const HANDLE hSearch = ::FindFirstFileW(sPath.c_str(), &found);
    if (hSearch == INVALID_HANDLE_VALUE)
        return files;
    const UniqueSearch search(hSearch);
    do
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            files.push_back(sFolder + found.cFileName);
    while (::FindNextFileW(search.get(), &found));
    std::ranges::sort(files);
    return files;
}

} // namespace zelkctl
