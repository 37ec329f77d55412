#pragma once

// Platform: what stands between the library and Windows alone, without a word of networking: owners of handles,
// functions that only some systems have, files, and what keeps the compiler's run time small and loadable on 5.2.
//
// Sizes are asked for by three rules, because the platform has three: a path is cut short without a word of the size
// that it needs, so the buffer grows step by step (module_path.h); most tables tell their size when asked without a
// buffer, and the second answer is final (AskThenCall in table_query.h); those of whole adapters say that a buffer is
// too small by another code, and are called with one from the start (CallThenGrowOnce).

#include <cstdint>
#include <utility>

#include <winsock2.h>

#include <windows.h>

namespace velmor
{

/// Owns one platform handle: the releaser is called with it exactly once, unless it is the kind's value for "none". A
/// releaser may carry what it needs for that.
template <class Handle, class Releaser, std::intptr_t None = 0>
class UniqueHandle
{
public:
    UniqueHandle() noexcept = default;
    explicit UniqueHandle(Handle handle) noexcept : m_handle(handle) {}
    explicit UniqueHandle(Releaser releaser) noexcept : m_releaser(releaser) {}
    UniqueHandle(UniqueHandle&& other) noexcept
        : m_handle(std::exchange(other.m_handle, NoHandle())), m_releaser(other.m_releaser)
    {
    }
    UniqueHandle& operator=(UniqueHandle&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        std::swap(m_releaser, other.m_releaser);
        return *this;
    }
    ~UniqueHandle() { Reset(); }

    [[nodiscard]] Handle Get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != NoHandle(); }

    /// Where a platform call writes the handle that it opens; what was owned before is released.
    Handle* Receive() noexcept
    {
        Reset();
        return &m_handle;
    }

    /// Gives the handle up: the caller releases it.
    [[nodiscard]] Handle Release() noexcept { return std::exchange(m_handle, NoHandle()); }

    void Reset() noexcept
    {
        if (*this)
            m_releaser(Release());
    }

private:
    static Handle NoHandle() noexcept { return reinterpret_cast<Handle>(None); }

    Handle m_handle = NoHandle();
    [[no_unique_address]] Releaser m_releaser;
};

struct CloseKernelHandle
{
    void operator()(HANDLE handle) const noexcept { ::CloseHandle(handle); }
};
struct CloseRegistryKey
{
    void operator()(HKEY hKey) const noexcept { ::RegCloseKey(hKey); }
};
struct FreeModule
{
    void operator()(HMODULE hModule) const noexcept { ::FreeLibrary(hModule); }
};
struct ReleaseHeldMutex
{
    void operator()(HANDLE hMutex) const noexcept { ::ReleaseMutex(hMutex); }
};

using UniqueFile = UniqueHandle<HANDLE, CloseKernelHandle, -1>;
using UniqueMutex = UniqueHandle<HANDLE, CloseKernelHandle>;
using UniqueToken = UniqueHandle<HANDLE, CloseKernelHandle>;
using UniqueKey = UniqueHandle<HKEY, CloseRegistryKey>;
using UniqueModule = UniqueHandle<HMODULE, FreeModule>;
/// A mutex that was waited for, not the mutex itself.
using HeldMutex = UniqueHandle<HANDLE, ReleaseHeldMutex>;

} // namespace velmor
