#pragma once

#include <string>

#include "trace/trace_file.h"
#include "trace/trace_location.h"

namespace zelkctl
{

/// Reads the trace of one program as it grows, every line once, whatever becomes of the file in between.
class TraceFollower
{
public:
    explicit TraceFollower(TraceLocation location);

    /// Whole lines that have come since the last call; the first time, all that there are, oldest first.
    std::string Take();
    /// The beginning of a line whose end has not come.
    [[nodiscard]] const std::string& Pending() const noexcept { return m_sPending; }

private:
    [[nodiscard]] std::string ReadNew(const TraceFile& file, const TraceFile& rotated) const;

    TraceLocation m_location;
    TraceFile::Mark m_read;    ///< in the current file
    TraceFile::Mark m_rotated; ///< the end of the rotated file
    std::string m_sPending;
};

} // namespace zelkctl
