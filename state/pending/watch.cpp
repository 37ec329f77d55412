#include <state/pending/watch.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include <state/machine/problem.h>
#include <state/pending/change_lock.h>
#include <state/pending/utc_time.h>

namespace zelk
{
namespace
{

using std::chrono::milliseconds;

constexpr milliseconds INTERVAL(200);
constexpr int MOST_ATTEMPTS = 3;             ///< at restoring; the system may still be starting
constexpr std::uint64_t MILLISECONDS = 1000; ///< of a second

/// What there is to do about a pending change at a moment.
enum class Due : std::uint8_t
{
    NOTHING,
    LOOK, ///< whether the process that is at work still lives
    RESTART_TIME,
    RESTORE
};

bool IsFromBeforeRestart(const PendingChange& change)
{
    return change.waitingSince.value_or(0) > ClockNow();
}

class Watch
{
public:
    Watch(const std::wstring& folder, const std::string& id, const WatchActions& actions)
        : m_folder(folder), m_id(id), m_actions(actions), m_sign(WatchFile(folder, id))
    {
    }

    WatchEnd Run()
    {
        for (;; std::this_thread::sleep_for(INTERVAL))
        {
            const bool isFirstLook = !m_known;
            const auto change = Load();
            if (!change || change->phase == PendingPhase::RESTORED)
                return WatchEnd::GONE;
            if (isFirstLook)
                m_isLate = change->phase == PendingPhase::WAITING;
            if (change->phase == PendingPhase::WAITING && change->waitFor && m_actions.answers(*change->waitFor))
            {
                if (const auto end = UnderLock(&Watch::Confirm))
                    return *end;
            }
            else if (WhatIsDue(*change) != Due::NOTHING)
            {
                if (const auto end = UnderLock(&Watch::DoWhatIsDue))
                    return *end;
            }
        }
    }

private:
    using Work = std::optional<WatchEnd> (Watch::*)(PendingChange&);

    /// As the record last said, where it cannot be read just now: nobody is to be stranded by that. Nothing when it has
    /// gone.
    std::optional<PendingChange> Load()
    {
        auto record = LoadPendingChange(m_folder, m_id);
        if (!record || record->change)
            m_known = record ? std::move(record->change) : std::nullopt;
        if (m_known && m_restartedAt)
            m_known->waitingSince = m_restartedAt;
        return m_known;
    }

    /// Whoever performs a change has the lock all the time, so what is seen under it is what is left.
    std::optional<WatchEnd> UnderLock(Work work)
    {
        const auto lock = ChangeLock::Take(m_folder, milliseconds(0));
        if (!lock)
            return std::nullopt;
        auto change = Load();
        if (!change || change->phase == PendingPhase::RESTORED)
            return WatchEnd::GONE;
        return (this->*work)(*change);
    }

    [[nodiscard]] Due WhatIsDue(const PendingChange& change) const
    {
        if (change.phase != PendingPhase::WAITING)
            return Due::LOOK;
        if (m_isLate || !change.waitingSince)
            return Due::RESTART_TIME;
        return TimeLeft(change) == 0u ? Due::RESTORE : Due::NOTHING;
    }

    std::optional<WatchEnd> Confirm(PendingChange& change)
    {
        if (change.phase != PendingPhase::WAITING)
            return std::nullopt;
        RemovePendingChange(m_folder, m_id);
        return WatchEnd::CONFIRMED;
    }

    std::optional<WatchEnd> DoWhatIsDue(PendingChange& change)
    {
        switch (WhatIsDue(change))
        {
        case Due::NOTHING: return std::nullopt;
        case Due::RESTART_TIME:
            change.waitingSince = m_restartedAt = ClockNow();
            Note(change);
            m_isLate = false;
            return std::nullopt;
        default: return Restore(change);
        }
    }

    /// A record that cannot be written, as on a full disk, keeps nothing from being restored.
    void Note(const PendingChange& change) const
    try
    {
        StorePendingChange(m_folder, change);
    }
    catch (const StateError&)
    {
    }

    std::optional<WatchEnd> Restore(PendingChange& change)
    {
        BeginRestoring(change,
                       change.phase == PendingPhase::WAITING ? RestoreCause::NOT_CONFIRMED : RestoreCause::INTERRUPTED);
        Note(change);
        change.restoration->open = m_actions.restore(change);
        change.restoration->at = UtcNow();
        if (change.restoration->open.empty())
            change.phase = PendingPhase::RESTORED;
        Note(change);
        if (change.phase == PendingPhase::RESTORED)
            return WatchEnd::RESTORED;
        if (++m_attempts < MOST_ATTEMPTS)
            return std::nullopt;
        return WatchEnd::NOT_RESTORED;
    }

    const std::wstring& m_folder;
    const std::string& m_id;
    const WatchActions& m_actions;
    LifeSign m_sign;
    std::optional<PendingChange> m_known;
    /// It has begun after the change was done, as after a restart of the machine: the clock may have started anew too.
    bool m_isLate = false;
    /// When this watch restarted the time to confirm. Kept here too, because the record may not be writable.
    std::optional<std::uint64_t> m_restartedAt;
    int m_attempts = 0;
};

} // namespace

std::wstring WatchFile(const std::wstring& folder, const std::string& id)
{
    return folder + L'\\' + std::wstring(id.begin(), id.end()) + L".watch";
}

WatchEnd WatchPendingChange(const std::wstring& folder, const std::string& id, const WatchActions& actions)
{
    return Watch(folder, id, actions).Run();
}

std::optional<std::uint64_t> TimeLeft(const PendingChange& change)
{
    if (change.phase != PendingPhase::WAITING)
        return std::nullopt;
    const std::uint64_t all = change.confirmWithin.value_or(0) * MILLISECONDS;
    if (!change.waitingSince || IsFromBeforeRestart(change))
        return all;
    return all - std::min(all, ClockNow() - *change.waitingSince);
}

} // namespace zelk
