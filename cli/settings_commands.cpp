#include "settings_commands.h"

#include "adapter.h"
#include "command.h"
#include "settings_record.h"

namespace zelkctl
{

void AddSettingsCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, "settings", "Further settings of an adapter", "settings show lan0 --json");
    CLI::App& verb =
        AddVerb(noun, "show", "Show DNS domain, automatic private addressing, NetBIOS and speed", "settings show lan0");
    AddJsonFlag(verb, output);
    RunForAdapter(verb,
                  [&output](const Adapter& adapter) { output.Record(SettingsFields(), SettingsOf(adapter.info)); });
}

} // namespace zelkctl
