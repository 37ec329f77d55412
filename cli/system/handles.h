#pragma once

#include <memory>
#include <type_traits>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{

/// How each kind of resource goes back to the system.
struct ReleaseResource
{
    void operator()(HANDLE hObject) const noexcept { ::CloseHandle(hObject); }
    void operator()(HKEY hKey) const noexcept { ::RegCloseKey(hKey); }
    void operator()(HMODULE hModule) const noexcept { ::FreeLibrary(hModule); }
};
struct ReleaseChangeNotification
{
    void operator()(HANDLE hChanges) const noexcept { ::FindCloseChangeNotification(hChanges); }
};

/// Owns a resource of the system; null without one.
template <class Resource, class Release = ReleaseResource>
using Owner = std::unique_ptr<std::remove_pointer_t<Resource>, Release>;

using UniqueHandle = Owner<HANDLE>; ///< a file, an event, a mutex, one end of a pipe or a process
using UniqueKey = Owner<HKEY>;
using UniqueModule = Owner<HMODULE>;
using UniqueChangeNotification = Owner<HANDLE, ReleaseChangeNotification>;

/// Functions that open files answer INVALID_HANDLE_VALUE where others answer null.
inline UniqueHandle OwnFile(HANDLE hFile)
{
    return UniqueHandle(hFile != INVALID_HANDLE_VALUE ? hFile : nullptr);
}

} // namespace zelkctl
