#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include <zelk_nm/tolva.h>

#include <shlwapi.h>

#include "adapter_commands.h"
#include "address_commands.h"
#include "arguments.h"
#include "command.h"
#include "console.h"
#include "dhcp_commands.h"
#include "dns_commands.h"
#include "exit_code.h"
#include "gateway_commands.h"
#include "identity_commands.h"
#include "output.h"
#include "route_commands.h"
#include "settings_commands.h"
#include "tcp6_commands.h"
#include "version.h"

namespace
{

using namespace zelkctl;

std::string UsageMessage(const CLI::App*, const CLI::Error& error)
{
    return std::string("zelkctl: ") + error.what() + "\nzelkctl: --help tells how to use it\n";
}

void Describe(CLI::App& app, Output& output)
{
    app.allow_windows_style_options(false); // a name may begin with "/"
    app.failure_message(UsageMessage);
    app.set_version_flag("--version", VersionText, "Show the version of the library");
    app.require_subcommand(0, 1);
    SetExample(app, "adapter list");
    AddRemark(app, "Exit codes:\n  0 done, 1 operation failed, 2 wrong usage, 3 no such or ambiguous adapter");
    AddAdapterCommands(app, output);
    AddAddressCommands(app, output);
    AddDhcpCommands(app, output);
    AddGatewayCommands(app, output);
    AddDnsCommands(app, output);
    AddRouteCommands(app, output);
    AddSettingsCommands(app, output);
    AddIdentityCommands(app, output);
    AddTcp6Commands(app, output);
    app.callback([&] {
        if (app.get_subcommands().empty())
            ShowAdapterList(output);
    });
}

/// Help and version are ends of the parser too, those that are no failure.
ExitCode EndOfParsing(const CLI::App& app, const CLI::ParseError& end)
{
    std::ostringstream data;
    std::ostringstream notes;
    const bool bDone = app.exit(end, data, notes) == 0;
    Output::Data(data.str());
    std::cerr << notes.str();
    return bDone ? EXIT_DONE : EXIT_USAGE;
}

ExitCode Run(std::vector<std::string> arguments)
{
    Output output;
    CLI::App app("Shows and changes the network adapters of this machine; without arguments it runs \"adapter list\".",
                 "zelkctl");
    Describe(app, output);
    std::reverse(arguments.begin(), arguments.end()); // the parser takes them from the back
    try
    {
        app.parse(std::move(arguments));
        return EXIT_DONE;
    }
    catch (const CLI::ParseError& end)
    {
        return EndOfParsing(app, end);
    }
}

/// The library takes its trace level from trace.ini when an object of it is made, and then empties the trace, in which
/// another zelkctl may be reading. So that is done only where somebody has set a level.
std::unique_ptr<TOLVA> HonourTraceSettings()
{
    velmor::string sOwnDir;
    if (!TOLVA::GetOwnDir(sOwnDir) || !::PathFileExistsW((sOwnDir + L"\\trace.ini").c_str()))
        return nullptr;
    return std::make_unique<TOLVA>();
}

ExitCode Fail(ExitCode code, const char* pszMessage)
{
    Output::Failure(pszMessage);
    return code;
}

} // namespace

int main()
try
{
    const Utf8Streams streams;
    try
    {
        const auto pSettings = HonourTraceSettings();
        return Run(Arguments());
    }
    catch (const NoSuchAdapter& error)
    {
        return Fail(EXIT_NO_SUCH_ADAPTER, error.what());
    }
    catch (const std::exception& error)
    {
        return Fail(EXIT_OPERATION_FAILED, error.what());
    }
    catch (...)
    {
        return Fail(EXIT_OPERATION_FAILED, "unknown exception");
    }
}
catch (...)
{
    // Not even the message could be written.
    return EXIT_OPERATION_FAILED;
}
