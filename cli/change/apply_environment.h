#pragma once

#include <chrono>
#include <memory>

#include <state/apply/apply.h>

#include "system/interrupt.h"
#include "system/progress.h"

namespace zelkctl
{

/// What surrounds a change while the tool makes it: progress on the error output, the reasons that the library traces,
/// and Ctrl+C, which undoes the change instead of ending the tool.
class ApplyEnvironment
{
public:
    /// For use as long as this object lives.
    [[nodiscard]] zelk::ApplyOptions Options(std::chrono::seconds timeout) const;

private:
    InterruptGuard m_guard;
    std::shared_ptr<std::unique_ptr<ProgressDisplay>> m_pDisplay = std::make_shared<std::unique_ptr<ProgressDisplay>>();
};

} // namespace zelkctl
