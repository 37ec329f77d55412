#include "verbs/settings_commands.h"

#include "parser/command.h"
#include "records/settings_record.h"

namespace zelkctl
{

void AddSettingsCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, {"settings", "Further settings of an adapter", "settings show lan0 --json"});
    const std::span<const Field> fields = SettingsFields();
    AddRecordVerb(noun, output,
                  {"show", "Show DNS domain, automatic private addressing, NetBIOS and speed", "settings show lan0"},
                  {fields.begin(), fields.end()}, [](const Adapter& adapter) { return SettingsOf(adapter.info); });
}

} // namespace zelkctl
