#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace zelk
{

/// Ends the commands that this process has started, with all that they have started, when the time is over or
/// `isCancelled` says so: for operations that wait for a command of theirs without an end. The operation finds that its
/// command has failed.
class CommandLimit
{
public:
    /// @param isCancelled  asked several times a second, on a thread of its own
    CommandLimit(std::chrono::milliseconds timeout, std::function<bool()> isCancelled);
    CommandLimit(const CommandLimit&) = delete;
    CommandLimit& operator=(const CommandLimit&) = delete;
    ~CommandLimit();

    /// Whether commands were ended because the time was over.
    [[nodiscard]] bool IsOver() const;

private:
    void Watch(std::chrono::milliseconds timeout, const std::function<bool()>& isCancelled);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_left = false;
    bool m_over = false;
    std::thread m_watch;
};

} // namespace zelk
