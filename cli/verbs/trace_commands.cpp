#include "verbs/trace_commands.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "answer/table.h"
#include "records/answer_schema.h"
#include "records/shown_fields.h"
#include "records/trace_settings.h"
#include "system/directory_watch.h"
#include "system/utf8.h"
#include "trace/trace_follower.h"
#include "trace/trace_record.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

using GivenLocation = std::function<TraceLocation()>;

/// Whose trace it is about.
GivenLocation AddProgramOption(Command verb)
{
    const auto program =
        verb.AddOption({"--program", "A program, or its directory, instead of zelkctl itself", "PATH"});
    return [program] { return program().empty() ? LocateTrace() : LocateTraceOf(program()); };
}

/// Which lines are shown.
struct Filter
{
    bool bErrors = false;
    std::string sOperation;

    [[nodiscard]] bool IsNamed(const TraceLine& line) const
    {
        const auto IsSame = [](unsigned char one, unsigned char other) {
            return std::tolower(one) == std::tolower(other);
        };
        return !std::ranges::search(line.sOperation, sOperation, IsSame).empty();
    }
    [[nodiscard]] bool Admits(const TraceLine& line) const
    {
        return (!bErrors || line.IsProblem()) && (sOperation.empty() || IsNamed(line));
    }
};

/// Makes answers of a trace piece by piece.
class TracePages
{
public:
    explicit TracePages(Filter filter) : m_filter(std::move(filter))
    {
        // As wide as the longest word, which need not be among the first lines.
        m_table.Add({{"Time"}, {"Level      "}, {"Operation"}, {"Message"}});
    }

    Answer Page(std::string_view text)
    {
        auto records = m_parser.Parse(text);
        std::erase_if(records, [&](const TraceRecord& record) { return !m_filter.Admits(record.line); });
        return {.value = RecordsOf(records),
                .fields = ShownFields<TraceRecord>(),
                .text = records.empty() ? "" : RowsOf(records),
                .sWhenEmpty = "The trace has no such line."};
    }

private:
    std::string RowsOf(const std::vector<TraceRecord>& records)
    {
        for (const TraceRecord& record : records)
        {
            const TraceLine& line = record.line;
            const TraceLevel& level = record.Level();
            m_table.Add({{line.sTime}, {level.pszName}, {Printable(line.sOperation)}, {Printable(line.sMessage)}},
                        level.colour);
            for (const std::string& sRow : record.rows)
                m_table.Add({{""}, {""}, {""}, {Printable(sRow)}}, level.colour);
        }
        return m_table.TakeText();
    }

    Filter m_filter;
    TraceParser m_parser;
    Table m_table;
};

void RequireDirectory(const TraceLocation& location)
{
    if (!location.HasDirectory())
        throw Failure(
            {.sReason = "nothing is traced because the directory " + ToUtf8(location.sDirectory) + " is missing",
             .sHint = "Create it; the library writes its trace there."});
}

Answer ShowTrace(const TraceLocation& location, Filter filter)
{
    RequireDirectory(location);
    TraceFollower trace(location);
    const std::string sLines = trace.Take();
    return TracePages(std::move(filter)).Page(sLines + trace.Pending());
}

/// A trace that is followed for as long as the user wants.
struct FollowedTrace
{
    TraceLocation location;
    TracePages pages;
    DirectoryWatch watch{location.sDirectory}; // before the first reading, so that nothing is missed
    TraceFollower trace{location};

    Answer Next()
    {
        RequireDirectory(location);
        Answer page = pages.Page(trace.Take());
        page.sWhenEmpty.clear();
        return page;
    }
};

Answer FollowTrace(const TraceLocation& location, Filter filter)
{
    RequireDirectory(location);
    const auto pTrace = std::make_shared<FollowedTrace>(location, TracePages(std::move(filter)));
    Answer first = pTrace->Next();
    first.next = [pTrace] { return pTrace->watch.Wait() ? std::optional(pTrace->Next()) : std::nullopt; };
    return first;
}

void AddShow(Command noun)
{
    Command verb =
        noun.AddVerb({"show", "Show what the library traced, oldest first", "trace show --errors --operation dhcp"});
    verb.AddFormOptions(ShownFields<TraceRecord>());
    verb.AddRemark(
        "The trace covers the last two times that a program loaded the library, as each run of "
        "zelkctl does.\nWith --follow, --json prints one object with these fields per line, without an envelope.");
    const auto errors = verb.AddFlag("--errors", "Only errors and warnings");
    const auto follow = verb.AddFlag("--follow", "Continue with new lines as they are traced, until Ctrl+C");
    const auto operation = verb.AddOption({"--operation", "Only operations whose name contains this text", "NAME"});
    verb.Answers([] { return ListOf<TraceRecord>(); },
                 [=, location = AddProgramOption(verb)] {
                     Filter filter{errors(), operation()};
                     return (follow() ? FollowTrace : ShowTrace)(location(), std::move(filter));
                 });
}

/// Writes the level unless it is only asked what that would change.
Answer SetLevel(const TraceLocation& location, unsigned int uiLevel, bool bCheck)
{
    const TraceSettings before = ReadTraceSettings(location);
    if (bCheck)
        return {.value = zelk::ToJson(before),
                .text = "",
                .notes = {"The trace level is " + std::to_string(before.uiLevel) + "; it would be " +
                          std::to_string(uiLevel) + '.'},
                .code = before.uiLevel == uiLevel ? EXIT_DONE : EXIT_DIFFERENCES};
    WriteTraceLevel(location, uiLevel);
    return {.value = zelk::ToJson(ReadTraceSettings(location)),
            .text = "",
            .notes = {std::string("The trace level is ") + std::to_string(uiLevel) + " (" +
                      TRACE_LEVELS[uiLevel].pszName + ") for each program of the directory that starts from now on."}};
}

void AddLevel(Command noun)
{
    Command verb = noun.AddVerb({"level", "Show or set how much is traced", "trace level 4"});
    verb.AddRemark("Levels:\n  0 nothing, 1 errors, 2 also warnings, 3 also information (the default), 4 everything\n\n"
                   "A program reads the level when it constructs a TOLVA, which also empties its trace.");
    const auto level = verb.AddOptionalArgument({"LEVEL", "The new level", "[0-4]"}, {"0", "1", "2", "3", "4"});
    const auto location = AddProgramOption(verb);
    const auto check = verb.AddFlag("--check", "Show whether the level would be changed, but change nothing");
    const auto fields = ShownFields<TraceSettings>();
    verb.AddFormOptions(fields);
    verb.Answers([] { return zelk::ReferenceTo("traceSettings"); },
                 [=] {
                     if (level().empty())
                         return Answer{.value = zelk::ToJson(ReadTraceSettings(location())), .fields = fields};
                     if (!verb.ChosenForm().sGet.empty())
                         throw UsageError("--get", "it shows the level and cannot be combined with a new one");
                     return SetLevel(location(), static_cast<unsigned int>(std::stoul(level())), check());
                 });
}

void AddPath(Command noun)
{
    Command verb = noun.AddVerb({"path", "Show where the trace and its settings are stored", "trace path --get path"});
    const auto fields = ShownFields<TracePath>();
    verb.AddFormOptions(fields);
    verb.Answers([] { return ListOf<TracePath>(); },
                 [fields, location = AddProgramOption(verb)] {
                     return Answer{.value = RecordsOf(TracePathsOf(location())), .fields = fields};
                 });
}

} // namespace

void AddTraceCommands(Command tool)
{
    Command noun = tool.AddNoun({TRACE_NOUN, "The trace of the library, and its level", "trace show --errors"});
    AddShow(noun);
    AddLevel(noun);
    AddPath(noun);
}

} // namespace zelkctl
