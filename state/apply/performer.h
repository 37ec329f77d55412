#pragma once

#include <state/apply/apply.h>

namespace zelk
{

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
