#pragma once

#include <algorithm>
#include <chrono>

#include <state/notifications/change_notifications.h>

namespace zelk
{

/// When to look at the machine again, until a time is over: at every change of which the platform notifies, and else at
/// an interval. To be constructed before the first look.
class LookSchedule
{
public:
    LookSchedule(std::chrono::milliseconds interval, std::chrono::milliseconds timeout)
        : m_interval(interval), m_end(Clock::now() + timeout)
    {
    }

    [[nodiscard]] bool IsOver() const { return Clock::now() >= m_end; }

    void AwaitNext()
    {
        using std::chrono::milliseconds;
        const auto left = std::chrono::ceil<milliseconds>(m_end - Clock::now());
        m_notifications.Wait(std::clamp(left, milliseconds(0), m_interval));
    }

private:
    using Clock = std::chrono::steady_clock;

    ChangeNotifications m_notifications;
    std::chrono::milliseconds m_interval;
    Clock::time_point m_end;
};

} // namespace zelk
