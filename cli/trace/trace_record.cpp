#include "trace/trace_record.h"

#include <algorithm>
#include <utility>

#include <state/fields/item.h>

namespace zelkctl
{

const TraceLevel& TraceRecord::Level() const
{
    return *std::ranges::find(TRACE_LEVELS, line.level, &TraceLevel::tag);
}

std::vector<TraceRecord> TraceParser::Parse(std::string_view text)
{
    std::vector<TraceRecord> records;
    while (!text.empty())
    {
        const std::string_view row = TakeLine(text);
        if (auto line = ParseTraceLine(row))
        {
            m_last = line;
            records.push_back({std::move(*line), {}});
            continue;
        }
        if (row.empty() || !m_last)
            continue;
        if (records.empty())
            records.push_back(
                {TraceLine{m_last->sTime, m_last->ulThread, m_last->level, m_last->sOperation, {}, {}}, {}});
        records.back().rows.emplace_back(row);
    }
    return records;
}

std::string TraceRecord::WholeMessage() const
{
    std::string sMessage = line.sMessage;
    for (const std::string& sRow : rows)
        sMessage.append(sMessage.empty() || sMessage.ends_with(' ') ? "" : " ").append(sRow);
    return sMessage;
}

} // namespace zelkctl

namespace zelk
{
namespace
{

using zelkctl::TraceRecord;

std::string TimeOf(const TraceRecord& record)
{
    return record.line.sTime;
}

std::string LevelOf(const TraceRecord& record)
{
    return record.Level().pszName;
}

std::string OperationOf(const TraceRecord& record)
{
    return record.line.sOperation;
}

unsigned long ThreadOf(const TraceRecord& record)
{
    return record.line.ulThread;
}

constexpr Field<TraceRecord> TRACE_RECORD[] = {
    Item<TraceRecord, TimeOf>("time", "Time", "Local time of the line."),
    Item<TraceRecord, LevelOf>("level", "Level", "Error, Warning, Information or Verbose."),
    Item<TraceRecord, OperationOf>("operation", "Operation", "The operation of the library that wrote the line."),
    Item<TraceRecord, &TraceRecord::WholeMessage>("message", "Message", "What it wrote."),
    Item<TraceRecord, ThreadOf>("thread", "Thread", "Identifier of the thread that wrote the line."),
};

} // namespace

template <>
FieldTable<TraceRecord> FieldsOf()
{
    return {"traceLine", TRACE_RECORD};
}

} // namespace zelk
