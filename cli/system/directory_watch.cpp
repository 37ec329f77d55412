#include "system/directory_watch.h"

#include <iterator>

#include "system/system_error.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

HANDLE FindChanges(const std::wstring& sDirectory)
{
    const HANDLE hChanges = ::FindFirstChangeNotificationW(sDirectory.c_str(), FALSE,
                                                           FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_SIZE |
                                                               FILE_NOTIFY_CHANGE_LAST_WRITE);
    if (hChanges == INVALID_HANDLE_VALUE)
        throw SystemError("watching the directory " + ToUtf8(sDirectory));
    return hChanges;
}

} // namespace

DirectoryWatch::DirectoryWatch(const std::wstring& sDirectory) : m_changes(FindChanges(sDirectory)) {}

bool DirectoryWatch::Wait()
{
    const HANDLE handles[] = {m_interrupt.Handle(), m_changes.get()};
    switch (::WaitForMultipleObjects(std::size(handles), handles, FALSE, INFINITE))
    {
    case WAIT_OBJECT_0: return false;
    case WAIT_OBJECT_0 + 1:
        if (::FindNextChangeNotification(m_changes.get()))
            return true;
        [[fallthrough]];
    default: throw SystemError("watching the directory");
    }
}

} // namespace zelkctl
