#include "verbs/dns_commands.h"

#include <string>

#include <state/apply/process.h>

#include "adapters/adapter.h"
#include "answer/cell_text.h"
#include "answer/failure.h"
#include "change/permission.h"
#include "parser/ip_argument.h"
#include "records/answer_schema.h"
#include "system/interrupt.h"
#include "system/progress.h"
#include "system/system_error.h"
#include "system/utf8.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

void AddSet(Command noun)
{
    Command verb =
        noun.AddVerb({"set", "Set static DNS servers of one adapter", "dns set lan0 192.168.1.1 2001:db8::53"});
    verb.AddRemark("They replace those of their family. If all of them are of one family, the servers of the other "
                   "family remain.");
    const auto adapter = AddAdapterIn(verb);
    const auto servers = verb.AddArguments({"SERVER", "The servers, in order of preference", "ADDRESS"});
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        zelk::DesiredAdapter desired;
        SetDnsServers(ParseAddresses("SERVER", servers()), desired);
        const zelk::Adapter& found = adapter(machine);
        return ChangeOf(found, std::move(desired), "Adapter " + Quoted(found) + " has the DNS servers given.");
    });
}

void AddReturn(Command noun)
{
    Command verb = noun.AddVerb({"return", "Remove the static DNS servers of one adapter", "dns return lan0 --ipv4"});
    const auto adapter = AddAdapterIn(verb);
    const auto families = AddFamilyFlags(verb);
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        const zelk::Adapter& found = adapter(machine);
        zelk::DesiredAdapter desired;
        for (const zelk::Family family : families.Of(machine, found))
            desired.Of(family).dnsServers = zelk::Automatic();
        return ChangeOf(found, std::move(desired), "Adapter " + Quoted(found) + " has no static DNS servers.");
    });
}

/// A verb that has the system's own command do it.
struct ResolverVerb
{
    CommandHelp help;
    const wchar_t* pszArgument; ///< of ipconfig
    const char* pszDoing;
    const char* pszDone;
};

const ResolverVerb RESOLVER_VERBS[] = {
    {{"flush", "Empty the cache of the system's DNS resolver", "dns flush"},
     L"/flushdns",
     "Emptying the cache",
     "The cache of the DNS resolver is empty."},
    {{"register", "Renew all DHCP leases and register the names of this machine in DNS again", "dns register"},
     L"/registerdns",
     "Registering the names",
     "The registration of the names has been started."}};

Answer Perform(const ResolverVerb& verb, std::chrono::seconds timeout)
{
    RequireElevation("");
    const InterruptGuard guard;
    const ProgressDisplay progress(verb.pszDoing);
    const auto result =
        zelk::RunSystemProgram(L"ipconfig.exe", {verb.pszArgument}, timeout, &InterruptGuard::IsInterrupted);
    const std::string sCommand = "ipconfig " + ToUtf8(std::wstring_view(verb.pszArgument));
    if (result.timedOut)
        throw Failure({.code = EXIT_TIME_OVER, .sReason = sCommand + " did not end in time and was ended"});
    if (result.cancelled)
        throw Failure({.sReason = sCommand + " was cancelled"});
    if (result.error != 0)
        throw Failure({.sReason = sCommand + " cannot be run: " + SystemText(result.error)});
    if (result.exitCode != 0u)
        throw Failure({.sReason = sCommand + " ended with exit code " + std::to_string(*result.exitCode) +
                                  (result.output.empty() ? "" : "; it printed: " + OneLine(result.output))});
    return {.value = {{"done", true}}, .text = "", .notes = {verb.pszDone}};
}

void AddResolverVerb(Command noun, const ResolverVerb& resolver)
{
    Command verb = noun.AddVerb(resolver.help);
    const auto timeout = AddTimeoutOption(verb, "How long the command may take; 60 by default");
    verb.AddJsonFlag();
    verb.Answers(
        [] {
            return ObjectOf({{"done", zelk::SchemaOfType("boolean")}});
        },
        [&resolver, timeout] { return Perform(resolver, timeout()); });
}

} // namespace

void AddDnsCommands(Command tool)
{
    Command noun = tool.AddNoun({"dns", "DNS servers of an adapter", "dns list lan0 --json"});
    AddAdapterListVerb(noun,
                       {{"list", "Show the DNS servers that one adapter uses, in order of preference", "dns list lan0"},
                        {"ipv4.dnsServers", "ipv6.dnsServers"},
                        {{"address", "Address"}},
                        DNS_SERVER_RECORD,
                        "The adapter has no DNS servers."});
    AddSet(noun);
    AddAdapterPartVerb(
        noun, {"status", "Show the DNS servers in use and the static ones of one adapter", "dns status lan0"},
        {"ipv4.dnsServers", "ipv4.configured.dnsServers", "ipv6.dnsServers", "ipv6.configured.dnsServers"});
    AddReturn(noun);
    for (const ResolverVerb& resolver : RESOLVER_VERBS)
        AddResolverVerb(noun, resolver);
}

} // namespace zelkctl
