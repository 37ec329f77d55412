#include "trace/trace_reader.h"

#include <cstdio>
#include <string_view>
#include <utility>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{
namespace
{

std::string Now()
{
    SYSTEMTIME now = {};
    ::GetLocalTime(&now);
    char text[48];
    std::snprintf(text, sizeof(text), "%4.4u-%2.2u-%2.2u %2.2u:%2.2u:%2.2u.%3.3u", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
    return text;
}

/// The library traces what a command that failed has written, line by line.
void CollectCommandOutput(const TraceLine& line, std::string& sOutput)
{
    constexpr std::string_view OUTPUT_LINE = "sLine = \"";
    std::string_view text = line.sMessage;
    if (!text.starts_with(OUTPUT_LINE) || !text.ends_with('"'))
        return;
    text.remove_prefix(OUTPUT_LINE.size());
    text.remove_suffix(text.empty() ? 0 : 1);
    if (!text.empty())
        sOutput.append(sOutput.empty() ? "" : " ").append(text);
}

} // namespace

TraceReader::TraceReader() : m_location(LocateTrace()), m_sStart(Now()), m_mark(TraceFile(m_location.sFile).MarkEnd())
{
}

std::vector<TraceLine> TraceReader::Problems() const
{
    const std::string sAppended = Appended();
    const unsigned long ulThread = ::GetCurrentThreadId();
    std::vector<TraceLine> problems;
    std::string sOutput;
    for (std::string_view rest = sAppended; !rest.empty();)
    {
        auto line = ParseTraceLine(TakeLine(rest));
        if (!line || line->ulThread != ulThread || line->sTime < m_sStart)
            continue;
        CollectCommandOutput(*line, sOutput);
        if (!line->IsProblem())
            continue;
        line->sCommandOutput = std::exchange(sOutput, {});
        problems.push_back(std::move(*line));
    }
    return problems;
}

std::string TraceReader::Appended() const
{
    const TraceFile file(m_location.sFile);
    if (const auto appended = file.ReadAfter(m_mark))
        return *appended;
    const TraceFile rotated(m_location.sRotatedFile);
    // After two rotations the marked file is gone, and the call's lines can stand anywhere in the other two.
    return rotated.ReadAfter(m_mark).value_or(rotated.ReadFrom(0)) + file.ReadFrom(0);
}

} // namespace zelkctl
