#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "trace_line.h"

namespace zelkctl
{

/// Reads what the library traces from the reader's construction on: built before a call, asked after it.
///
/// Every process that loads the library moves the trace file to its ".old" name, and may do so during the call.
class TraceReader
{
public:
    TraceReader();

    /// Errors and warnings of the calling thread, the innermost failure first, each with the output of the command
    /// that failed before it. Empty when nothing can be read.
    [[nodiscard]] std::vector<TraceLine> Problems() const;

    /// Where the library writes its trace file; it writes none when there is no such directory.
    [[nodiscard]] const std::wstring& Directory() const noexcept { return m_sDirectory; }
    [[nodiscard]] bool HasDirectory() const;

    /// A place in the file. The bytes before it tell whether a file is still the one that was marked: its size does
    /// not, because a new file grows past the mark, nor does its number, which a new file may be given again.
    struct Mark
    {
        std::uint64_t position = 0;
        std::string sBefore;
    };

private:
    [[nodiscard]] std::string Appended() const;

    std::wstring m_sDirectory;
    std::string m_sStart; ///< time of construction, as a trace line has it
    Mark m_mark;
};

} // namespace zelkctl
