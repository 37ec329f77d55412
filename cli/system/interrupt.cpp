#include "system/interrupt.h"

#include <atomic>

namespace zelkctl
{
namespace
{

std::atomic<bool> g_bInterrupted = false; // the system calls on a thread of its own, with nothing but the event

/// The console has no other way to tell the handler.
HANDLE g_hInterrupt = nullptr;

bool IsInterruption(DWORD dwEvent)
{
    return dwEvent == CTRL_C_EVENT || dwEvent == CTRL_BREAK_EVENT;
}

BOOL WINAPI Note(DWORD dwEvent)
{
    if (!IsInterruption(dwEvent))
        return FALSE;
    g_bInterrupted = true;
    return TRUE;
}

BOOL WINAPI Signal(DWORD dwEvent)
{
    return IsInterruption(dwEvent) && ::SetEvent(g_hInterrupt);
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

InterruptEvent::InterruptEvent() : m_event(::CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    g_hInterrupt = m_event.get();
    ::SetConsoleCtrlHandler(&Signal, TRUE);
}

InterruptEvent::~InterruptEvent()
{
    ::SetConsoleCtrlHandler(&Signal, FALSE);
}

} // namespace zelkctl
