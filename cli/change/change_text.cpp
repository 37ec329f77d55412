#include "change/change_text.h"

#include <algorithm>

#include "answer/cell_text.h"
#include "answer/table.h"
#include "answer/value_text.h"
#include "records/shown_fields.h"
#include "system/console.h"

namespace zelkctl
{
namespace
{

/// With what a list of addresses alone does not tell. What somebody has set by hand is the usual case.
std::string ElementText(const Json& element)
{
    std::string text = TextOf(element);
    if (element.is_object() && element.contains("metric") && !element["metric"].is_null())
        text += " metric " + element["metric"].dump();
    if (element.is_object() && element.contains("origin") && element["origin"].is_string() &&
        element["origin"] != "manual")
        text += " (" + element["origin"].get<std::string>() + ')';
    if (element.is_object() && element.contains("store") && element["store"] == "active")
        text += " (until the next start)";
    return text;
}

Table::Cell LinesOf(const Json& value)
{
    if (!value.is_array() || value.empty())
        return {TextOf(value)};
    Table::Cell lines;
    std::ranges::transform(value, std::back_inserter(lines), ElementText);
    return lines;
}

/// What is in use, as far as that could be read, and below it what is configured where that is something else.
Table::Cell BeforeLines(const Json& before)
{
    if (!before.is_object() || !before.contains("inUse"))
        return LinesOf(before);
    Table::Cell lines = before["inUse"].is_null() ? Table::Cell{"unknown"} : LinesOf(before["inUse"]);
    if (before["configured"].is_null())
        return lines;
    const Table::Cell configured = LinesOf(before["configured"]);
    if (lines != configured)
        for (const std::string& sLine : configured)
            lines.push_back("configured: " + sLine);
    return lines;
}

std::string AdapterPrefix(const std::string& sAdapter)
{
    return sAdapter.empty() ? "" : Printable(sAdapter) + ": ";
}

std::string StepText(const zelk::Step& step)
{
    return AdapterPrefix(step.adapter) + Printable(step.text);
}

std::string OutcomeText(zelk::StepOutcome outcome)
{
    switch (outcome)
    {
    case zelk::StepOutcome::DONE: return "done";
    case zelk::StepOutcome::FAILED: return "failed";
    case zelk::StepOutcome::TIMED_OUT: return "not done in time";
    case zelk::StepOutcome::CANCELLED: return "cancelled";
    case zelk::StepOutcome::NOT_RUN: break;
    }
    return "not started";
}

std::string StepLines(const std::vector<zelk::StepResult>& steps, const char* pszIndent)
{
    std::string text;
    for (const zelk::StepResult& result : steps)
    {
        text += pszIndent + StepText(result.step) + ": " + OutcomeText(result.outcome) + " (" +
                std::to_string(result.duration.count()) + " ms)\n";
        if (!result.reason.empty())
            text += std::string(pszIndent) + "  " + Printable(result.reason) + '\n';
        if (const std::string sOutput = OneLine(result.output); !result.reason.empty() && !sOutput.empty())
            text += std::string(pszIndent) + "  It printed: " + sOutput + '\n';
    }
    return text;
}

std::string OpenLines(const std::vector<zelk::Difference>& differences)
{
    std::string text;
    for (const zelk::Difference& difference : differences)
    {
        const std::string sItem = AdapterPrefix(difference.adapter) + LabelOf(difference.path);
        if (difference.before.is_null() && difference.after.is_null())
        {
            text += "The previous configuration is not known: " + sItem + '\n';
            continue;
        }
        text += "Not as wanted: " + sItem + ':';
        const Table::Cell lines = BeforeLines(difference.before);
        for (std::size_t i = 0; i < lines.size(); ++i)
            text += (i == 0 ? " " : ", ") + lines[i];
        text += '\n';
    }
    return text;
}

} // namespace

std::string LabelOf(const std::string& sPath)
{
    constexpr std::string_view IDENTITY = "identity.";
    const bool bIdentity = sPath.starts_with(IDENTITY);
    const std::string sKey = bIdentity ? sPath.substr(IDENTITY.size()) : sPath;
    const auto fields = bIdentity ? ShownFields<zelk::Identity>() : ShownFields<zelk::Adapter>();
    const auto found = std::ranges::find(fields, sKey, &Field::sKey);
    return found != fields.end() ? found->sLabel : sPath;
}

std::string TextOf(const zelk::Plan& plan)
{
    if (plan.differences.empty())
        return {};
    Table table;
    table.Add({{"Adapter"}, {"Item"}, {"Before"}, {"After"}});
    for (const zelk::Difference& difference : plan.differences)
        table.Add({{difference.adapter.empty() ? "-" : Printable(difference.adapter)},
                   {LabelOf(difference.path)},
                   BeforeLines(difference.before),
                   LinesOf(difference.after)},
                  Colour::WATCH);
    std::string text = table.Text(OutputColumns()) + "\nSteps:\n";
    for (const zelk::Step& step : plan.steps)
    {
        const std::string sCommand = zelk::CommandText(step.action);
        text += "  " + StepText(step) + "\n    " + Printable(sCommand.empty() ? zelk::MeansOf(step.action) : sCommand) +
                '\n';
    }
    return text;
}

std::string TextOf(const zelk::ApplyResult& result)
{
    std::string text = StepLines(result.steps, "");
    if (result.undo)
        text += "Undone:\n" + StepLines(result.undo->steps, "  ");
    return text + OpenLines(result.undo ? result.undo->open : result.open);
}

std::string TextOf(const zelk::Undo& undo)
{
    return StepLines(undo.steps, "") + OpenLines(undo.open);
}

std::string TextOf(const zelk::Progress& progress)
{
    if (progress.step == nullptr)
        return "Verifying";
    const bool bUndoing = progress.phase == zelk::Progress::Phase::UNDOING;
    return (bUndoing ? "Undoing: " : "") + StepText(*progress.step) + " (" + std::to_string(progress.number) + " of " +
           std::to_string(progress.count) + ')';
}

} // namespace zelkctl
