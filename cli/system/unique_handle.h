#pragma once

#include <memory>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{

struct CloseKernelHandle
{
    void operator()(HANDLE handle) const noexcept { ::CloseHandle(handle); }
};

/// Owns a file, an event, a mutex, a pipe's end or a process; null without one.
using UniqueHandle = std::unique_ptr<void, CloseKernelHandle>;

} // namespace zelkctl
