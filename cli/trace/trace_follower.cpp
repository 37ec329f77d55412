#include "trace/trace_follower.h"

#include <utility>

namespace zelkctl
{

TraceFollower::TraceFollower(TraceLocation location) : m_location(std::move(location)) {}

std::string TraceFollower::Take()
{
    {
        const TraceLock lock;
        const TraceFile file(m_location.sFile);
        const TraceFile rotated(m_location.sRotatedFile);
        m_sPending += ReadNew(file, rotated);
        m_read = file.MarkEnd();
        m_rotated = rotated.MarkEnd();
    }
    const std::size_t length = m_sPending.rfind('\n') + 1; // 0 without one
    std::string sLines = m_sPending.substr(0, length);
    m_sPending.erase(0, length);
    return sLines;
}

std::string TraceFollower::ReadNew(const TraceFile& file, const TraceFile& rotated) const
{
    const auto appended = file.ReadAfter(m_read);
    if (appended && m_read.position > 0) // every file begins like an empty one
        return *appended;
    if (rotated.MarkEnd() == m_rotated) // the file was emptied or has just come
        return file.ReadFrom(0);
    // After two rotations what was read is gone, and all of both files is new.
    return rotated.ReadAfter(m_read).value_or(rotated.ReadFrom(0)) + file.ReadFrom(0);
}

} // namespace zelkctl
