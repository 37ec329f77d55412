#pragma once

#include <chrono>

#include <state/apply/apply.h>
#include <zelk_state/zelk_state.h>

namespace zelk
{

/// Tells a program what becomes of a change, and asks it whether to go on.
class ProgressCallback
{
public:
    /// @param callback  may be null
    ProgressCallback(zelk_state_progress callback, void* context) noexcept : m_callback(callback), m_context(context) {}

    /// For use as long as this object lives.
    [[nodiscard]] ApplyOptions Options(std::chrono::seconds timeout);

private:
    void Tell(const Progress& progress);
    bool IsCancelled();

    zelk_state_progress m_callback;
    void* m_context;
    bool m_cancelled = false; ///< once and for all
};

} // namespace zelk
