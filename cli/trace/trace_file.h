#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "system/handles.h"

namespace zelkctl
{

/// A trace file of the library, open for reading so that nobody is kept from appending to it or moving it away. It is
/// to be held for a short time only: until then a deleted file keeps its name from being given again.
class TraceFile
{
public:
    /// A missing file reads as an empty one.
    explicit TraceFile(const std::wstring& sPath);

    /// A place in the file. The bytes before it tell whether a file is still the one that was marked: its size does
    /// not, because a new file grows past the mark, nor does its number, which a new file may be given again.
    struct Mark
    {
        std::uint64_t position = 0;
        std::string sBefore;

        bool operator==(const Mark&) const = default;
    };

    [[nodiscard]] Mark MarkEnd() const;
    [[nodiscard]] std::string ReadFrom(std::uint64_t start) const;
    /// What follows the mark; nothing when the file is not the one that was marked.
    [[nodiscard]] std::optional<std::string> ReadAfter(const Mark& mark) const;

private:
    [[nodiscard]] std::uint64_t Size() const;

    UniqueHandle m_file;
};

/// Keeps every program from writing to its trace file and from moving it for as long as it lives, which is to be short.
/// Where that cannot be had, it is done without.
class TraceLock
{
public:
    TraceLock();
    TraceLock(const TraceLock&) = delete;
    TraceLock& operator=(const TraceLock&) = delete;
    ~TraceLock();

private:
    UniqueHandle m_mutex;
    bool m_bHeld;
};

} // namespace zelkctl
