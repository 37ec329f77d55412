#pragma once

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

} // namespace zelkctl
