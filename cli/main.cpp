#include <exception>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <state/answers/reports.h>
#include <state/answers/watch_program.h>
#include <zelk_nm/tolva.h>

#include "answer/render.h"
#include "parser/command_line.h"
#include "parser/help_format.h"
#include "system/console.h"
#include "system/program_arguments.h"
#include "trace/trace_location.h"
#include "verbs/adapter_commands.h"
#include "verbs/address_commands.h"
#include "verbs/completion_commands.h"
#include "verbs/dhcp_commands.h"
#include "verbs/dns_commands.h"
#include "verbs/doctor_commands.h"
#include "verbs/gateway_commands.h"
#include "verbs/identity_commands.h"
#include "verbs/machine_commands.h"
#include "verbs/pending_commands.h"
#include "verbs/report_commands.h"
#include "verbs/route_commands.h"
#include "verbs/settings_commands.h"
#include "verbs/state_commands.h"
#include "verbs/tcp6_commands.h"
#include "verbs/trace_commands.h"
#include "verbs/watch_commands.h"

namespace
{

using namespace zelkctl;

void AddCommands(Command tool)
{
    AddMachineCommands(tool);
    AddStateCommands(tool);
    AddWatchCommand(tool);
    AddPendingCommands(tool);
    AddAdapterCommands(tool);
    AddAddressCommands(tool);
    AddDhcpCommands(tool);
    AddGatewayCommands(tool);
    AddDnsCommands(tool);
    AddRouteCommands(tool);
    AddSettingsCommands(tool);
    AddIdentityCommands(tool);
    AddTcp6Commands(tool);
    AddDoctorCommand(tool);
    AddReportCommand(tool);
    AddTraceCommands(tool);
    AddCompletionCommands(tool);
}

/// The tool's own options, and what it does without a command.
void AddToolItself(CLI::App& parser, Command tool, Request& request)
{
    parser.allow_windows_style_options(false); // a name may begin with "/"
    parser.require_subcommand(0, 1);
    parser.formatter(std::make_shared<HelpFormatter>());
    tool.AddRemark("Examples:\n  zelkctl adapter list\n  zelkctl help adapter list");
    tool.AddRemark("Exit codes:\n  0 done, 1 operation failed, 2 wrong usage, 3 no such adapter or several,\n"
                   "  4 requires elevation, 5 time over, 6 done but not verified, 7 another change\n"
                   "  is being made or waits to be confirmed, 8 not possible on this system,\n"
                   "  10 --check found differences");
    const auto fields = AdapterListFields();
    tool.AddFormOptions(fields);
    tool.AddColumnOptions(fields);
    const auto version = tool.AddFlag("-V,--version", "Show the version of the library");
    parser.callback([&parser, &request, version] {
        if (!parser.get_subcommands().empty())
            return;
        request.sCommand = version() ? "version" : "adapter list";
        request.answer = version() ? VersionAnswer : [] { return ListAdapters({}, false); };
    });
}

/// The library takes its trace level from trace.ini when an object of it is made, and then empties the trace, in which
/// another zelkctl may be reading. So that is done only where somebody has set a level.
std::unique_ptr<TOLVA> HonourTraceSettings()
{
    if (::GetFileAttributesW(LocateTrace().sTraceSettings.c_str()) == INVALID_FILE_ATTRIBUTES)
        return nullptr;
    return std::make_unique<TOLVA>();
}

Answer AnswerTo(const CLI::App& parser, const Request& request)
{
    const bool bLooksAtTrace = parser.got_subcommand(TRACE_NOUN) || parser.got_subcommand(REPORT_VERB);
    const auto pSettings = bLooksAtTrace ? nullptr : HonourTraceSettings(); // which empties it
    const auto notes = PendingNotes(request.sCommand);
    Answer answer = request.answer();
    answer.notes.insert(answer.notes.begin(), notes.begin(), notes.end());
    return answer;
}

Failure FailureOf(const std::exception& error)
{
    if (const auto* pFailure = dynamic_cast<const Failure*>(&error))
        return *pFailure;
    if (const auto* pError = dynamic_cast<const zelk::StateError*>(&error))
        return Failure(zelk::ReportOf(*pError));
    return Failure({.sReason = error.what()});
}

/// Answers the command line, and tells why where that fails.
ExitCode Run(CLI::App& parser, const std::vector<std::string>& arguments, Request& request)
try
{
    ReadCommandLine(parser, arguments, request);
    const Answer answer = AnswerTo(parser, request);
    Renderer(request.form, request.sCommand).Render(answer);
    return answer.code;
}
catch (const std::exception& error)
{
    const Failure failure = FailureOf(error);
    Renderer(request.form, request.sCommand).Render(failure);
    return failure.What().code;
}

} // namespace

int wmain(int count, wchar_t** ppszArguments)
try
{
    const Utf8Streams streams;
    const auto arguments = ProgramArguments(count, ppszArguments);
    Request request;
    CLI::App parser(
        "Shows and changes the network configuration of this machine. Without a command it lists the adapters.",
        "zelkctl");
    const Command tool(parser, request);
    AddToolItself(parser, tool, request);
    AddCommands(tool);
    if (!arguments.empty() && arguments.front() == COMPLETE_VERB)
    {
        AnswerCompletion(parser, arguments);
        return EXIT_DONE;
    }
    if (!arguments.empty() && arguments.front() == zelk::WATCH_VERB)
    {
        WatchOverChange(arguments);
        return EXIT_DONE;
    }
    return Run(parser, arguments, request);
}
catch (...)
{
    // Not even the message could be written.
    return EXIT_OPERATION_FAILED;
}
