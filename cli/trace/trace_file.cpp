#include "trace/trace_file.h"

#include <algorithm>

#include <zelk_common/trace_files.h>

namespace zelkctl
{
namespace
{

constexpr DWORD LOCK_WAIT_MS = 1000;

UniqueHandle OpenForReading(const std::wstring& sPath)
{
    return OwnFile(::CreateFileW(sPath.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                 nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool IsHeldAfter(DWORD dwWait)
{
    return dwWait == WAIT_OBJECT_0 || dwWait == WAIT_ABANDONED;
}

} // namespace

TraceFile::TraceFile(const std::wstring& sPath) : m_file(OpenForReading(sPath)) {}

TraceFile::Mark TraceFile::MarkEnd() const
{
    constexpr std::uint64_t ENOUGH_TO_RECOGNISE = 256; // two lines, times and threads included
    const std::uint64_t size = Size();
    const std::uint64_t start = size - std::min(size, ENOUGH_TO_RECOGNISE);
    std::string sBefore = ReadFrom(start);
    return {start + sBefore.size(), std::move(sBefore)};
}

std::string TraceFile::ReadFrom(std::uint64_t start) const
{
    std::string text;
    LARGE_INTEGER position = {};
    position.QuadPart = static_cast<LONGLONG>(start);
    if (!m_file || !::SetFilePointerEx(m_file.get(), position, nullptr, FILE_BEGIN))
        return text;

    char buffer[4096];
    DWORD dwRead = 0;
    while (::ReadFile(m_file.get(), buffer, sizeof(buffer), &dwRead, nullptr) && dwRead > 0)
        text.append(buffer, dwRead);
    return text;
}

std::optional<std::string> TraceFile::ReadAfter(const Mark& mark) const
{
    std::string text = ReadFrom(mark.position - mark.sBefore.size());
    if (!text.starts_with(mark.sBefore))
        return std::nullopt;
    return text.erase(0, mark.sBefore.size());
}

std::uint64_t TraceFile::Size() const
{
    LARGE_INTEGER size = {};
    return m_file && ::GetFileSizeEx(m_file.get(), &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

TraceLock::TraceLock()
    : m_mutex(::OpenMutexW(SYNCHRONIZE, FALSE, zelk_common::TRACE_FILE)),
      m_bHeld(m_mutex && IsHeldAfter(::WaitForSingleObject(m_mutex.get(), LOCK_WAIT_MS)))
{
}

TraceLock::~TraceLock()
{
    if (m_bHeld)
        ::ReleaseMutex(m_mutex.get());
}

} // namespace zelkctl
