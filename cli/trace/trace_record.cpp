#include "trace/trace_record.h"

#include <algorithm>
#include <utility>

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

std::span<const Field> TraceFields()
{
    static constexpr Field FIELDS[] = {
        {"time", "Time"}, {"level", "Level"}, {"operation", "Operation"}, {"message", "Message"}, {"thread", "Thread"}};
    return FIELDS;
}

Json JsonOf(const TraceRecord& record)
{
    std::string sMessage = record.line.sMessage;
    for (const std::string& sRow : record.rows)
        sMessage.append(sMessage.empty() || sMessage.ends_with(' ') ? "" : " ").append(sRow);
    Json json;
    json["time"] = record.line.sTime;
    json["level"] = record.Level().pszWord;
    json["operation"] = record.line.sOperation;
    json["message"] = std::move(sMessage);
    json["thread"] = record.line.ulThread;
    return json;
}

} // namespace zelkctl
