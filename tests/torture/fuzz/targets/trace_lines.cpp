// Lines of the library's trace, as the tool reads them again.

#include <cstdio>
#include <string>

#include "fuzz.h"
#include "trace/trace_record.h"

namespace
{

using zelkctl::TraceLine;

std::string Printed(const TraceLine& line)
{
    char thread[32];
    std::snprintf(thread, sizeof(thread), "%08lX", line.ulThread);
    return '[' + line.sTime + "]:" + thread + ":[" + line.level + "]: " + line.sOperation + " : " + line.sMessage;
}

void TryLine(std::string_view text)
{
    const auto line = zelkctl::ParseTraceLine(text);
    if (!line)
        return;
    const auto again = zelkctl::ParseTraceLine(Printed(*line));
    fuzz::Require(again && again->sTime == line->sTime && again->ulThread == line->ulThread);
    fuzz::Require(again->level == line->level && again->sOperation == line->sOperation);
    fuzz::Require(again->sMessage == line->sMessage);
    zelkctl::Reason(line->sMessage);
}

} // namespace

void fuzz::Try(std::string_view text)
{
    std::size_t lines = 0;
    for (std::string_view rest = text; !rest.empty(); ++lines)
    {
        const std::size_t before = rest.size();
        const std::string_view line = zelkctl::TakeLine(rest);
        Require(line.find('\n') == std::string_view::npos && rest.size() < before);
        TryLine(line);
    }
    for (const zelkctl::TraceRecord& record : zelkctl::TraceParser().Parse(text))
    {
        Require(record.Level().tag == record.line.level && lines >= 1 + record.rows.size());
        lines -= 1 + record.rows.size();
        Require(record.WholeMessage().size() <= text.size());
    }
}
