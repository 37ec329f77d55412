#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <state/platform/handles.h>

namespace zelk
{

/// Who is changing the machine.
struct Changer
{
    std::string user;
    std::uint32_t process = 0;
    std::string since; ///< UTC, such as "2026-01-31T23:59:59Z"

    bool operator==(const Changer&) const = default;
};

/// This process, now.
Changer ThisChanger();

/// Only one process at a time changes the machine: the one that has the lock's file open. The system closes the file of
/// a process that dies, so its lock is free at once. Owned by one thread at a time.
class ChangeLock
{
public:
    /// Takes the lock. While another process has it, tries again until the time is over or `isCancelled` says so; with
    /// no time it tries once.
    /// @param folder  that PrepareChangeFolder has prepared
    /// @return nothing when it was not to be had.
    /// @throws StateError when its file cannot be made.
    static std::optional<ChangeLock> Take(const std::wstring& folder, std::chrono::milliseconds timeout,
                                          const std::function<bool()>& isCancelled = {});

    /// Who has the lock; nothing when it is free, or its owner has just begun.
    static std::optional<Changer> Holder(const std::wstring& folder);

private:
    explicit ChangeLock(UniqueHandle file) noexcept : m_file(std::move(file)) {}

    UniqueHandle m_file;
};

/// A file that is open as long as its process lives: how one process sees whether another is still there.
class LifeSign
{
public:
    /// @throws StateError when the file is open already, or cannot be made.
    explicit LifeSign(const std::wstring& file);

    /// Whether a process has it open now.
    static bool IsGiven(const std::wstring& file);

private:
    UniqueHandle m_file;
};

} // namespace zelk
