#include "verbs/trace_commands.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <winsock2.h>

#include <windows.h>

#include "answer/table.h"
#include "parser/command.h"
#include "system/directory_watch.h"
#include "system/elevation.h"
#include "system/number.h"
#include "system/text.h"
#include "trace/trace_follower.h"
#include "trace/trace_location.h"
#include "trace/trace_record.h"

namespace zelkctl
{
namespace
{

constexpr unsigned int DEFAULT_LEVEL = 3;
constexpr Field LEVEL = {"level", "Level"};
constexpr Field LEVEL_FIELDS[] = {
    LEVEL, {"word", "Word"}, {"isDefault", "Is the default"}, {"settingsFile", "Settings file"}};
constexpr Field PATH_FIELDS[] = {{"item", "Item"}, {"path", "Path"}, {"exists", "Exists"}};

std::string PathText(const std::wstring& sPath)
{
    return ToUtf8(std::wstring_view(sPath));
}

/// Whose trace it is about.
std::function<TraceLocation()> AddProgramOption(CLI::App& verb)
{
    const auto program =
        AddOption(verb, "--program", "The program, or its directory, instead of zelkctl itself", "PATH");
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

/// Shows a trace piece by piece.
class TracePrinter
{
public:
    TracePrinter(Filter filter, bool bEndless, const Output& output)
        : m_filter(std::move(filter)), m_bEndless(bEndless), m_output(output)
    {
        // As wide as the longest word, which need not be among the first lines.
        m_table.Add({"Time", "Level      ", "Operation", "Message"});
    }

    void Print(std::string_view text)
    {
        auto records = m_parser.Parse(text);
        std::erase_if(records, [&](const TraceRecord& record) { return !m_filter.Admits(record.line); });
        if (m_output.IsText() && !records.empty())
            return PrintRows(records);
        if (m_bEndless && records.empty())
            return;
        Json answer = Json::array();
        for (const TraceRecord& record : records)
            answer.push_back(JsonOf(record));
        if (m_bEndless && m_output.IsJson())
        {
            std::ranges::for_each(answer, Output::JsonLine);
            return;
        }
        m_output.List(TraceFields(), answer, "No such line is traced.");
    }

private:
    void PrintRows(const std::vector<TraceRecord>& records)
    {
        for (const TraceRecord& record : records)
        {
            const TraceLine& line = record.line;
            const TraceLevel& level = record.Level();
            m_table.Add({line.sTime, level.pszWord, Printable(line.sOperation), Printable(line.sMessage)},
                        level.colour);
            for (const std::string& sRow : record.rows)
                m_table.Add({"", "", "", Printable(sRow)}, level.colour);
        }
        Output::Data(m_table.TakeText());
    }

    Filter m_filter;
    bool m_bEndless;
    const Output& m_output;
    TraceParser m_parser;
    Table m_table;
};

void RequireDirectory(const TraceLocation& location)
{
    if (!location.HasDirectory())
        throw Failure(
            {.sReason = "the directory " + PathText(location.sDirectory) + " is missing, so nothing is traced",
             .sHint = "Make it, and the library writes its trace there."});
}

void ShowTrace(const TraceLocation& location, Filter filter, const Output& output)
{
    RequireDirectory(location);
    TraceFollower trace(location);
    const std::string sLines = trace.Take();
    TracePrinter(std::move(filter), false, output).Print(sLines + trace.Pending());
}

void FollowTrace(const TraceLocation& location, Filter filter, const Output& output)
{
    RequireDirectory(location);
    DirectoryWatch watch(location.sDirectory); // before the first reading, so that nothing is missed
    TraceFollower trace(location);
    TracePrinter printer(std::move(filter), true, output);
    do
    {
        RequireDirectory(location);
        printer.Print(trace.Take());
    } while (watch.Wait());
}

void AddShow(CLI::App& noun, Output& output)
{
    CLI::App& verb =
        AddVerb(noun, {"show", "Show what the library traced, oldest first", "trace show --errors --operation dhcp"});
    AddFormFlags(verb, output, TraceFields());
    AddRemark(verb, "The lines of the load of the library before the last stand first; every start of zelkctl is a "
                    "load.\nWith --follow, --json writes one object with these fields a line, without an envelope.");
    const auto errors = AddFlag(verb, "--errors", "Errors and warnings alone");
    const auto follow = AddFlag(verb, "--follow", "Go on with what is traced from now on, until Ctrl+C");
    const auto operation = AddOption(verb, "--operation", "Operations alone whose name has this in it", "NAME");
    Run(verb, [=, &output, location = AddProgramOption(verb)] {
        Filter filter{errors(), operation()};
        (follow() ? FollowTrace : ShowTrace)(location(), std::move(filter), output);
    });
}

constexpr const wchar_t* LEVEL_SECTION = L"Main";
constexpr const wchar_t* LEVEL_KEY = L"TOLVA_TraceLevel";

/// Nothing when the default is in force.
std::optional<unsigned int> ReadLevel(const TraceLocation& location)
{
    const unsigned int uiNone = std::size(TRACE_LEVELS);
    const unsigned int uiLevel =
        ::GetPrivateProfileIntW(LEVEL_SECTION, LEVEL_KEY, static_cast<INT>(uiNone), location.sTraceSettings.c_str());
    return uiLevel < uiNone ? std::optional(uiLevel) : std::nullopt;
}

Json LevelOf(const TraceLocation& location)
{
    const auto level = ReadLevel(location);
    const unsigned int uiLevel = level.value_or(DEFAULT_LEVEL);
    Json record;
    record["level"] = uiLevel;
    record["word"] = TRACE_LEVELS[uiLevel].pszWord;
    record["isDefault"] = !level.has_value();
    record["settingsFile"] = PathText(location.sTraceSettings);
    return record;
}

bool WriteLevel(const TraceLocation& location, unsigned int uiLevel)
{
    if (::WritePrivateProfileStringW(LEVEL_SECTION, LEVEL_KEY, std::to_wstring(uiLevel).c_str(),
                                     location.sTraceSettings.c_str()))
        return true;
    const DWORD dwError = ::GetLastError();
    const bool bElevationHelps = dwError == ERROR_ACCESS_DENIED && !IsElevated();
    throw Failure({.code = bElevationHelps ? EXIT_NEEDS_ELEVATION : EXIT_OPERATION_FAILED,
                   .sReason = PathText(location.sTraceSettings) +
                              " cannot be written: " + std::system_category().message(static_cast<int>(dwError)),
                   .sOperation = "WritePrivateProfileString",
                   .sHint = bElevationHelps ? "Run it from an elevated prompt." : ""});
}

Change SetLevel(const TraceLocation& location, unsigned int uiLevel)
{
    return {.sOperation = "WritePrivateProfileString",
            .sDoing = "Setting the trace level",
            .sDone = std::string("The trace level is ") + std::to_string(uiLevel) + " (" +
                     TRACE_LEVELS[uiLevel].pszWord + ") for each program of the directory that starts from now on.",
            .aspects = {{.field = LEVEL, .read = [=] { return LevelOf(location)["level"]; }, .wanted = uiLevel}},
            .operation = [=] { return WriteLevel(location, uiLevel); },
            .bNeedsElevation = false};
}

void AddLevel(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, {"level", "Show how much is traced, or set it", "trace level 4"});
    AddRemark(verb, "Levels:\n  0 nothing, 1 errors, 2 and warnings, 3 and information (the default), 4 everything\n\n"
                    "A program takes the level when it constructs a TOLVA, which empties its trace.");
    const auto level = AddOptionalArgument(verb, "LEVEL", "The new level", "[0-4]", {"0", "1", "2", "3", "4"});
    auto location = AddProgramOption(verb);
    const auto change = AddChange(verb, output, [level, location] {
        return SetLevel(location(), static_cast<unsigned int>(std::stoul(level())));
    });
    AddGetOption(verb, output, LEVEL_FIELDS);
    Run(verb, [&output, level, location, change] {
        if (level().empty())
            return output.Record(LEVEL_FIELDS, LevelOf(location()));
        if (!output.IsText() && !output.IsJson())
            throw WrongUse("--get", "it shows the level, and does not go with a new one");
        change();
    });
}

Json PathsOf(const TraceLocation& location)
{
    const std::pair<const char*, const std::wstring&> items[] = {{"directory", location.sDirectory},
                                                                 {"trace", location.sFile},
                                                                 {"trace before", location.sRotatedFile},
                                                                 {"level settings", location.sTraceSettings},
                                                                 {"directory settings", location.sLogSettings}};
    Json records = Json::array();
    for (const auto& [pszItem, sPath] : items)
    {
        Json record;
        record["item"] = pszItem;
        record["path"] = PathText(sPath);
        record["exists"] = ::GetFileAttributesW(sPath.c_str()) != INVALID_FILE_ATTRIBUTES;
        records.push_back(std::move(record));
    }
    return records;
}

void AddPath(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, {"path", "Show where the trace and its settings stand", "trace path --get path"});
    AddFormFlags(verb, output, PATH_FIELDS);
    Run(verb, [&output, location = AddProgramOption(verb)] { output.List(PATH_FIELDS, PathsOf(location()), ""); });
}

} // namespace

CLI::App& AddTraceCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, {"trace", "What the library traced, and how much it traces", "trace show --errors"});
    AddShow(noun, output);
    AddLevel(noun, output);
    AddPath(noun, output);
    return noun;
}

} // namespace zelkctl
