#include <algorithm>
#include <exception>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include <zelk_nm/tolva.h>

#include <shlwapi.h>

#include "answer/output.h"
#include "parser/command.h"
#include "records/adapter_record.h"
#include "system/arguments.h"
#include "system/console.h"
#include "system/exit_code.h"
#include "system/text.h"
#include "trace/trace_location.h"
#include "verbs/adapter_commands.h"
#include "verbs/address_commands.h"
#include "verbs/completion_commands.h"
#include "verbs/dhcp_commands.h"
#include "verbs/dns_commands.h"
#include "verbs/doctor_commands.h"
#include "verbs/gateway_commands.h"
#include "verbs/identity_commands.h"
#include "verbs/route_commands.h"
#include "verbs/settings_commands.h"
#include "verbs/tcp6_commands.h"
#include "verbs/trace_commands.h"
#include "verbs/version.h"

namespace
{

using namespace zelkctl;

/// The library takes its trace level from trace.ini when an object of it is made, and then empties the trace, in which
/// another zelkctl may be reading. So that is done only where somebody has set a level.
std::unique_ptr<TOLVA> HonourTraceSettings()
{
    if (!::PathFileExistsW(LocateTrace().sTraceSettings.c_str()))
        return nullptr;
    return std::make_unique<TOLVA>();
}

void Describe(CLI::App& app, std::unique_ptr<TOLVA>& pSettings, Output& output)
{
    app.allow_windows_style_options(false); // a name may begin with "/"
    app.set_version_flag("--version", VersionText, "Show the version of the library");
    app.require_subcommand(0, 1);
    SetExample(app, "adapter list");
    AddRemark(app, "Exit codes:\n  0 done, 1 operation failed, 2 wrong usage, 3 no such or ambiguous adapter,\n"
                   "  4 needs elevation, 10 --check found differences");
    AddFormFlags(app, output, SummaryFields());
    AddReadBackFlag(app, output);
    AddAdapterCommands(app, output);
    AddAddressCommands(app, output);
    AddDhcpCommands(app, output);
    AddGatewayCommands(app, output);
    AddDnsCommands(app, output);
    AddRouteCommands(app, output);
    AddSettingsCommands(app, output);
    AddIdentityCommands(app, output);
    AddTcp6Commands(app, output);
    AddDoctorCommand(app, output);
    const CLI::App& trace = AddTraceCommands(app, output);
    AddCompletionCommands(app, output);
    // Runs before the command does. What looks at the trace must not empty it.
    app.parse_complete_callback([&] {
        if (!app.got_subcommand(&trace))
            pSettings = HonourTraceSettings();
    });
    app.callback([&] {
        if (!app.get_subcommands().empty())
            return;
        output.SetCommand("adapter list");
        ShowAdapterList(output);
    });
}

/// A wrong verb is a missing one to the parser, which then does not name it. It repeats what the user gave as it is.
std::string ReasonOf(const CLI::App& app, const CLI::ParseError& end)
{
    std::string sReason = end.what();
    const auto unexpected = app.remaining(true);
    if (end.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError) && !unexpected.empty())
        sReason += ", not \"" + unexpected.front() + '"';
    return Printable(sReason);
}

/// Help and version are ends of the parser too, those that are no failure.
void EndParsing(const CLI::App& app, const CLI::ParseError& end, Output& output)
{
    std::ostringstream data;
    std::ostringstream notes;
    if (app.exit(end, data, notes) == 0)
        return Output::Data(data.str());
    output.Fail(Failure({.code = EXIT_USAGE, .sReason = ReasonOf(app, end), .sHint = "--help tells how to use it."}));
}

void Parse(CLI::App& app, std::vector<std::string> arguments, Output& output)
{
    std::reverse(arguments.begin(), arguments.end()); // the parser takes them from the back
    try
    {
        app.parse(std::move(arguments));
    }
    catch (const CLI::ParseError& end)
    {
        EndParsing(app, end, output);
    }
}

ExitCode Run(Output& output)
{
    std::unique_ptr<TOLVA> pSettings; // for as long as commands run
    auto arguments = Arguments();
    // Before they are read: a wrong use is to be told in this form too.
    output.SetJson(std::ranges::find(arguments, "--json") != arguments.end());
    CLI::App app("Shows and changes the network adapters of this machine; without arguments it runs \"adapter list\".",
                 "zelkctl");
    Describe(app, pSettings, output);
    if (!arguments.empty() && arguments.front() == COMPLETE_VERB)
    {
        AnswerCompletion(app, arguments);
        return EXIT_DONE;
    }
    Parse(app, std::move(arguments), output);
    return output.GetExitCode();
}

} // namespace

int main()
try
{
    const Utf8Streams streams;
    Output output;
    try
    {
        return Run(output);
    }
    catch (const Failure& failure)
    {
        output.Fail(failure);
    }
    catch (const std::exception& error)
    {
        output.Fail(Failure({.sReason = error.what()}));
    }
    return output.GetExitCode();
}
catch (...)
{
    // Not even the message could be written.
    return EXIT_OPERATION_FAILED;
}
