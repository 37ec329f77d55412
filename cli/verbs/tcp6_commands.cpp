#include "verbs/tcp6_commands.h"

#include "answer/json_value.h"
#include "parser/command.h"
#include "records/tcp6_record.h"
#include "verbs/tcp6_table.h"

namespace zelkctl
{
namespace
{

void AddList(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, {"list", "Show all TCP connections over IPv6", "tcp6 list"});
    AddFormFlags(verb, output, Tcp6Fields());
    Run(verb, [&output] {
        output.List(Tcp6Fields(), RecordsOf(ReadTcp6Table(), RecordOf), "There is no TCP connection over IPv6.");
    });
}

} // namespace

void AddTcp6Commands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, {"tcp6", "TCP connections over IPv6", "tcp6 list --json"});
    AddList(noun, output);
}

} // namespace zelkctl
