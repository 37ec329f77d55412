#pragma once

#include <string>
#include <vector>

#include "trace/trace_file.h"
#include "trace/trace_line.h"
#include "trace/trace_location.h"

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
    [[nodiscard]] const std::wstring& Directory() const noexcept { return m_location.sDirectory; }
    [[nodiscard]] bool HasDirectory() const { return m_location.HasDirectory(); }

private:
    [[nodiscard]] std::string Appended() const;

    TraceLocation m_location;
    std::string m_sStart; ///< time of construction, as a trace line has it
    TraceFile::Mark m_mark;
};

} // namespace zelkctl
