#include <state/answers/error_report.h>

#include <utility>

namespace zelk
{
namespace
{

const char* KindOf(ExitCode code)
{
    switch (code)
    {
    case EXIT_USAGE: return "usage";
    case EXIT_NO_SUCH_ADAPTER: return "adapter";
    case EXIT_NEEDS_ELEVATION: return "elevation";
    case EXIT_BUSY: return "busy";
    case EXIT_NOT_POSSIBLE: return "unsupported";
    default: return "failed";
    }
}

} // namespace

Json ToJson(const ErrorReport& report)
{
    const auto OrNull = [](const std::string& text) { return text.empty() ? Json() : Json(text); };
    Json json;
    json["kind"] = KindOf(report.code);
    json["exitCode"] = static_cast<int>(report.code);
    json["operation"] = OrNull(report.operation);
    json["adapter"] = OrNull(report.adapter);
    json["reason"] = report.reason;
    json["hint"] = OrNull(report.hint);
    return json;
}

ReportedError::ReportedError(ErrorReport report) : std::runtime_error(report.reason), m_report(std::move(report)) {}

} // namespace zelk
