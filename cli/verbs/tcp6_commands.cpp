#include "verbs/tcp6_commands.h"

#include "records/answer_schema.h"
#include "records/shown_fields.h"
#include "records/tcp6_connection.h"

namespace zelkctl
{

void AddTcp6Commands(Command tool)
{
    Command noun = tool.AddNoun({"tcp6", "TCP connections over IPv6", "tcp6 list --json"});
    Command verb = noun.AddVerb({"list", "Show all TCP connections over IPv6", "tcp6 list"});
    const auto fields = ShownFields<Tcp6Connection>();
    verb.AddFormOptions(fields);
    verb.AddColumnOptions(fields);
    verb.Answers([] { return ListOf<Tcp6Connection>(); },
                 [fields] {
                     return Answer{.value = RecordsOf(ReadTcp6Connections()),
                                   .fields = fields,
                                   .sWhenEmpty = "There are no TCP connections over IPv6."};
                 });
}

} // namespace zelkctl
