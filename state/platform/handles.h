#pragma once

#include <memory>
#include <type_traits>

#include <winsock2.h>

#include <windows.h>

namespace zelk
{

/// Calls a function of the platform to let something go.
template <auto Function>
struct Release
{
    template <class T>
    void operator()(T* resource) const noexcept
    {
        Function(resource);
    }
};

/// An open registry key.
using UniqueKey = std::unique_ptr<std::remove_pointer_t<HKEY>, Release<::RegCloseKey>>;
/// A text that the system allocated.
using UniqueLocalText = std::unique_ptr<wchar_t, Release<::LocalFree>>;
/// An access token.
using UniqueHandle = std::unique_ptr<void, Release<::CloseHandle>>;

} // namespace zelk
