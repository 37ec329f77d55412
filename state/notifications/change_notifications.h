#pragma once

#include <chrono>
#include <memory>

namespace zelk
{

/// Tells when the platform says that addresses, routes or interfaces have changed. What changes from the construction
/// on is told: who constructs it before reading the machine misses nothing. How much has changed is not told, and
/// several changes can be told as one.
///
/// From Vista on the system calls back; before, it signals an event, for IPv4 only. Where a system lacks or refuses
/// that, and for what no system tells, such as DNS servers, the machine has to be read again after a while.
///
/// All calls come from one thread, which outlives the object: requests of systems before Vista belong to their thread.
class ChangeNotifications
{
public:
    /// Fails in no way: what cannot be registered is not told.
    ChangeNotifications();
    ChangeNotifications(const ChangeNotifications&) = delete;
    ChangeNotifications& operator=(const ChangeNotifications&) = delete;
    /// Returns once the system calls back no more.
    ~ChangeNotifications();

    /// Whether the system has accepted all registrations.
    [[nodiscard]] bool AreComplete() const noexcept;

    /// Waits until a change is told, or the interval is over. A change mostly comes as several notifications: it
    /// returns a moment after the first one. False as soon as `stop`, a handle of an event, is signaled.
    bool Wait(std::chrono::milliseconds interval, void* stop = nullptr);

private:
    struct Registrations;
    std::unique_ptr<Registrations> m_registrations;
};

} // namespace zelk
