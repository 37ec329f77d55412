#include <state/platform/file_search.h>

#include <string_view>

#include <state/platform/handles.h>

namespace zelk
{

std::vector<FoundFile> FindFiles(const std::wstring& pattern)
{
    std::vector<FoundFile> files;
    WIN32_FIND_DATAW found = {};
    const HANDLE opened = ::FindFirstFileW(pattern.c_str(), &found);
    if (opened == INVALID_HANDLE_VALUE)
        return files;
    const std::unique_ptr<void, Release<::FindClose>> search(opened);
    do
        if (const std::wstring_view name = found.cFileName; name != L"." && name != L"..")
            files.push_back({found.cFileName, (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
    while (::FindNextFileW(search.get(), &found));
    return files;
}

} // namespace zelk
