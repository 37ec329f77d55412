#include "adapter_commands.h"

#include "adapter.h"
#include "adapter_changes.h"
#include "adapter_record.h"
#include "command.h"
#include "json_value.h"

namespace zelkctl
{
namespace
{

void AddList(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, "list", "Show all adapters that are enabled for IPv4", "adapter list --json");
    AddJsonFlag(verb, output);
    verb.callback([&output] { ShowAdapterList(output); });
}

void AddShow(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, "show", "Show everything that is known of one adapter", "adapter show lan0");
    AddJsonFlag(verb, output);
    RunForAdapter(verb, [&output](const Adapter& adapter) { output.Record(DetailFields(), DetailsOf(adapter)); });
}

} // namespace

void AddAdapterCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, "adapter", "Network adapters", "adapter show {00000002-0000-0000-0000-4E6574446576}");
    AddList(noun, output);
    AddShow(noun, output);
    AddAdapterChanges(noun);
}

void ShowAdapterList(const Output& output)
{
    output.List(SummaryFields(), RecordsOf(ListAdapters(), SummaryOf), "No network adapter is enabled for IPv4.");
}

} // namespace zelkctl
