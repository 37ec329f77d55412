#pragma once

#include <memory>
#include <string>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{

/// Tells when files of a directory change. For as long as it lives, Ctrl+C ends the waiting instead of the program.
class DirectoryWatch
{
public:
    explicit DirectoryWatch(const std::wstring& sDirectory);
    DirectoryWatch(const DirectoryWatch&) = delete;
    DirectoryWatch& operator=(const DirectoryWatch&) = delete;
    ~DirectoryWatch();

    /// Waits for a change since construction, or since the last wait. False when the user ends it.
    bool Wait();

private:
    struct CloseEvent
    {
        void operator()(HANDLE hEvent) const noexcept { ::CloseHandle(hEvent); }
    };
    struct CloseChanges
    {
        void operator()(HANDLE hChanges) const noexcept { ::FindCloseChangeNotification(hChanges); }
    };
    std::unique_ptr<void, CloseEvent> m_interrupt;
    std::unique_ptr<void, CloseChanges> m_changes;
};

} // namespace zelkctl
