#include "verbs/adapter_commands.h"

#include "adapters/adapter.h"
#include "answer/json_value.h"
#include "parser/command.h"
#include "records/adapter_record.h"
#include "verbs/adapter_changes.h"

namespace zelkctl
{

void AddAdapterCommands(CLI::App& app, Output& output)
{
    CLI::App& noun =
        AddNoun(app, {"adapter", "Network adapters", "adapter show {00000002-0000-0000-0000-4E6574446576}"});
    CLI::App& list = AddVerb(noun, {"list", "Show all adapters that are enabled for IPv4", "adapter list --json"});
    AddFormFlags(list, output, SummaryFields());
    Run(list, [&output] { ShowAdapterList(output); });
    AddRecordVerb(noun, output, {"show", "Show everything that is known of one adapter", "adapter show lan0"},
                  DetailFields(), DetailsOf);
    AddAdapterChanges(noun, output);
}

void ShowAdapterList(const Output& output)
{
    output.List(SummaryFields(), RecordsOf(ListAdapters(), SummaryOf), "No network adapter is enabled for IPv4.");
}

} // namespace zelkctl
