#include "system/interrupt.h"

#include <atomic>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{
namespace
{

std::atomic<bool> g_bInterrupted = false; // the system calls on a thread of its own, with nothing but the event

BOOL WINAPI Note(DWORD dwEvent)
{
    if (dwEvent != CTRL_C_EVENT && dwEvent != CTRL_BREAK_EVENT)
        return FALSE;
    g_bInterrupted = true;
    return TRUE;
}

} // namespace

InterruptGuard::InterruptGuard()
{
    ::SetConsoleCtrlHandler(&Note, TRUE);
}

InterruptGuard::~InterruptGuard()
{
    ::SetConsoleCtrlHandler(&Note, FALSE);
}

bool InterruptGuard::IsInterrupted() noexcept
{
    return g_bInterrupted;
}

} // namespace zelkctl
