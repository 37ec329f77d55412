#pragma once

#include <string>
#include <thread>

namespace zelkctl
{

/// Tells on the error output, for as long as it lives, what the tool waits for and for how many seconds: on a terminal
/// in one line that is rewritten and goes at the end, elsewhere by a line now and then. What is quick shows nothing.
class Waiting
{
public:
    /// `sDoing` is what takes its time, such as "Renewing the lease".
    explicit Waiting(std::string sDoing);

private:
    std::jthread m_ticker; ///< its destructor stops it at once and waits until it has ended
};

} // namespace zelkctl
