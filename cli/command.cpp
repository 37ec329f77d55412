#include "command.h"

#include <utility>

namespace zelkctl
{

void SetExample(CLI::App& app, const std::string& sExample)
{
    app.footer("Example:\n  zelkctl " + sExample);
}

void AddRemark(CLI::App& app, const std::string& sRemark)
{
    app.footer(app.get_footer() + "\n\n" + sRemark);
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

CLI::Option& AddArguments(CLI::App& verb, const std::string& sName, const std::string& sDescription,
                          const std::string& sForm)
{
    return *AddArgument(verb, sName, sDescription, sForm + " ...")
                .expected(1, CLI::detail::expected_max_vector_size)
                ->allow_extra_args();
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

void RunForFamilies(CLI::App& verb, std::function<void(const Adapter&, TOLVA::FAMILY_TYPE)> action)
{
    const CLI::Option& wanted = AddAdapterArgument(verb);
    CLI::Option& ipv4 =
        *verb.add_flag("--ipv4")->description("IPv4 alone instead of both families")->disable_flag_override();
    CLI::Option& ipv6 =
        *verb.add_flag("--ipv6")->description("IPv6 alone instead of both families")->disable_flag_override();
    ipv4.excludes(&ipv6);
    verb.callback([&, action = std::move(action)] {
        const auto enFamily = ipv4.count() > 0   ? TOLVA::FAMILY_IPV4
                              : ipv6.count() > 0 ? TOLVA::FAMILY_IPV6
                                                 : TOLVA::FAMILY_BOTH;
        action(FindAdapter(wanted.as<std::string>()), enFamily);
    });
}

const char* FamilyText(TOLVA::FAMILY_TYPE enFamily)
{
    if (enFamily == TOLVA::FAMILY_BOTH)
        return "IPv4 and IPv6";
    return enFamily == TOLVA::FAMILY_IPV4 ? "IPv4" : "IPv6";
}

} // namespace zelkctl
