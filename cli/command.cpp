#include "command.h"

#include <utility>

namespace zelkctl
{

void SetExample(CLI::App& app, const std::string& sExample)
{
    app.footer("Example:\n  zelkctl " + sExample);
}

CLI::App& AddNoun(CLI::App& app, const std::string& sName, const std::string& sDescription, const std::string& sExample)
{
    CLI::App& noun = AddVerb(app, sName, sDescription, sExample);
    noun.require_subcommand(1);
    return noun;
}

CLI::App& AddVerb(CLI::App& noun, const std::string& sName, const std::string& sDescription,
                  const std::string& sExample)
{
    CLI::App& verb = *noun.add_subcommand(sName, sDescription);
    SetExample(verb, sExample);
    return verb;
}

void AddJsonFlag(CLI::App& verb, Output& output)
{
    verb.add_flag_callback(
        "--json", [&output] { output.SetJson(true); }, "Write JSON instead of text");
}

CLI::Option& AddArgument(CLI::App& verb, const std::string& sName, const std::string& sDescription,
                         const std::string& sForm)
{
    return *verb.add_option(sName, sDescription)->required()->option_text(sForm);
}

CLI::Option& AddAdapterArgument(CLI::App& verb)
{
    return AddArgument(verb, "ADAPTER", "Its name, GUID or index", "NAME|{GUID}|INDEX");
}

void RunForAdapter(CLI::App& verb, std::function<void(const Adapter&)> action)
{
    const CLI::Option& wanted = AddAdapterArgument(verb);
    verb.callback([&wanted, action = std::move(action)] { action(FindAdapter(wanted.as<std::string>())); });
}

} // namespace zelkctl
