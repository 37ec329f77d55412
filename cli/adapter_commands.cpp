#include "adapter_commands.h"

#include <string>

#include "adapter.h"
#include "adapter_record.h"
#include "command.h"

namespace zelkctl
{
namespace
{

void ShowAdapter(const Output& output, const std::string& sWanted)
{
    output.Record(DetailFields(), DetailsOf(FindAdapter(sWanted)));
}

void AddList(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, "list", "Show all adapters that are enabled for IPv4", "adapter list --json");
    AddJsonFlag(verb, output);
    verb.callback([&output] { ShowAdapterList(output); });
}

void AddShow(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, "show", "Show everything that is known of one adapter", "adapter show lan0");
    const CLI::Option& wanted = AddAdapterArgument(verb);
    AddJsonFlag(verb, output);
    verb.callback([&output, &wanted] { ShowAdapter(output, wanted.as<std::string>()); });
}

} // namespace

void AddAdapterCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, "adapter", "Network adapters", "adapter show {00000002-0000-0000-0000-4E6574446576}");
    AddList(noun, output);
    AddShow(noun, output);
}

void ShowAdapterList(const Output& output)
{
    Json records = Json::array();
    for (const Adapter& adapter : ListAdapters())
        records.push_back(SummaryOf(adapter));
    output.List(SummaryFields(), records, "No network adapter is enabled for IPv4.");
}

} // namespace zelkctl
