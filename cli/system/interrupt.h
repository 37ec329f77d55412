#pragma once

#include "system/handles.h"

namespace zelkctl
{

/// For as long as it lives, Ctrl+C does not end the tool: it is only noted, so that a change can be undone.
class InterruptGuard
{
public:
    InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;
    ~InterruptGuard();

    [[nodiscard]] static bool IsInterrupted() noexcept;
};

/// For as long as it lives, Ctrl+C does not end the tool but signals an event, for waits that it is to end. One at a
/// time.
class InterruptEvent
{
public:
    InterruptEvent();
    InterruptEvent(const InterruptEvent&) = delete;
    InterruptEvent& operator=(const InterruptEvent&) = delete;
    ~InterruptEvent();

    [[nodiscard]] HANDLE Handle() const noexcept { return m_event.get(); }

private:
    UniqueHandle m_event;
};

} // namespace zelkctl
