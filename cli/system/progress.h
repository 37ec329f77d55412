#pragma once

#include <string>
#include <thread>

#include "system/handles.h"

namespace zelkctl
{

/// Tells on the error output, for as long as it lives, what the tool waits for and for how many seconds: on a terminal
/// in one line that is rewritten and goes at the end, elsewhere by a line now and then. What is quick shows nothing.
class ProgressDisplay
{
public:
    /// `sDoing` is what takes its time, such as "Renewing the lease".
    explicit ProgressDisplay(std::string sDoing);
    ProgressDisplay(const ProgressDisplay&) = delete;
    ProgressDisplay& operator=(const ProgressDisplay&) = delete;
    ~ProgressDisplay();

private:
    UniqueHandle m_end; ///< a stop token's callbacks can hang in this tool chain's library
    std::thread m_ticker;
};

} // namespace zelkctl
