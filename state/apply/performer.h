#pragma once

#include <chrono>

#include <state/apply/apply.h>

namespace zelk
{

/// How long to wait before looking again.
inline constexpr std::chrono::milliseconds LOOK_INTERVAL(200);

/// The machine as it is now, read on a thread of its own: some systems keep what they have read of the resolver's
/// settings for each thread.
Machine ReadAnew();

/// Does single steps.
class Performer
{
public:
    Performer(const ApplyOptions& options, bool cancellable) : m_options(options), m_cancellable(cancellable) {}

    /// @param machine  as it was before the change
    [[nodiscard]] StepResult Perform(const Machine& machine, const Step& step) const;
    [[nodiscard]] bool IsCancelled() const { return m_cancellable && m_options.isCancelled && m_options.isCancelled(); }

private:
    const ApplyOptions& m_options;
    bool m_cancellable;
};

} // namespace zelk
