#include "parser/command.h"

#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

namespace zelkctl
{
namespace
{

CLI::Option& AddFlagOption(CLI::App& verb, const std::string& sName, const std::string& sDescription)
{
    return *verb.add_flag(sName)->description(sDescription)->disable_flag_override();
}

CLI::Option& AddPlainArgument(CLI::App& verb, const std::string& sName, const std::string& sDescription,
                              const std::string& sForm)
{
    return *verb.add_option(sName, sDescription)->option_text(sForm);
}

Text AnswerOf(const CLI::Option& option)
{
    return [&option] { return option.count() > 0 ? option.as<std::string>() : std::string(); };
}

bool IsReadBack(const CLI::App& verb)
{
    const CLI::App* pTool = &verb;
    while (pTool->get_parent() != nullptr)
        pTool = pTool->get_parent();
    return pTool->count(READ_BACK) > 0;
}

/// "adapter list", without the tool's own name.
std::string CommandWords(const CLI::App& app)
{
    const CLI::App* pParent = app.get_parent();
    if (pParent == nullptr)
        return "";
    const std::string sBefore = CommandWords(*pParent);
    return sBefore + (sBefore.empty() ? "" : " ") + app.get_name();
}

} // namespace

void SetExample(CLI::App& app, const std::string& sExample)
{
    app.footer("Example:\n  zelkctl " + sExample);
}

void AddRemark(CLI::App& app, const std::string& sRemark)
{
    app.footer(app.get_footer() + "\n\n" + sRemark);
}

CLI::App& AddNoun(CLI::App& app, const VerbTexts& texts)
{
    CLI::App& noun = AddVerb(app, texts);
    noun.require_subcommand(1);
    return noun;
}

CLI::App& AddVerb(CLI::App& noun, const VerbTexts& texts)
{
    CLI::App& verb = *noun.add_subcommand(texts.sName, texts.sDescription);
    SetExample(verb, texts.sExample);
    return verb;
}

void Run(CLI::App& verb, std::function<void()> action)
{
    verb.callback(std::move(action));
}

void AddReadBackFlag(CLI::App& app, Output& output)
{
    AddFlagOption(app, READ_BACK, "").group("")->each([&output](const std::string&) { output.SetJson(true); });
}

void AddJsonFlag(CLI::App& command, Output& output)
{
    command.preparse_callback([&](std::size_t) { output.SetCommand(CommandWords(command)); });
    command
        .add_flag_callback(
            "--json", [&output] { output.SetJson(true); }, "Write JSON instead of text")
        ->disable_flag_override();
}

void AddFormFlags(CLI::App& command, Output& output, std::span<const Field> fields)
{
    AddJsonFlag(command, output);
    AddGetOption(command, output, fields);
}

void AddGetOption(CLI::App& command, Output& output, std::span<const Field> fields)
{
    std::vector<std::string> keys;
    for (const Field& field : fields)
        keys.emplace_back(field.pszKey);
    AddRemark(command, "Fields:\n  " + CLI::detail::join(keys, ", "));
    command
        .add_option_function<std::string>(
            "--get", [&output](const std::string& sKey) { output.SetGet(sKey); },
            "Write the bare values of this field, without JSON")
        ->option_text("FIELD")
        ->check(CLI::IsMember(keys));
}

Text AddArgument(CLI::App& verb, const std::string& sName, const std::string& sDescription, const std::string& sForm)
{
    return AnswerOf(*AddPlainArgument(verb, sName, sDescription, sForm).required());
}

Text AddOptionalArgument(CLI::App& verb, const std::string& sName, const std::string& sDescription,
                         const std::string& sForm, const std::vector<std::string>& values)
{
    CLI::Option& argument = AddPlainArgument(verb, sName, sDescription, sForm);
    if (!values.empty())
        argument.check(CLI::IsMember(values));
    return AnswerOf(argument);
}

Texts AddArguments(CLI::App& verb, const std::string& sName, const std::string& sDescription, const std::string& sForm)
{
    const CLI::Option& arguments = *AddPlainArgument(verb, sName, sDescription, sForm + " ...")
                                        .required()
                                        ->expected(1, CLI::detail::expected_max_vector_size)
                                        ->allow_extra_args();
    return [&arguments] { return arguments.as<std::vector<std::string>>(); };
}

Text AddOption(CLI::App& verb, const std::string& sName, const std::string& sDescription, const std::string& sForm)
{
    return AnswerOf(AddPlainArgument(verb, sName, sDescription, sForm));
}

Flag AddFlag(CLI::App& verb, const std::string& sName, const std::string& sDescription)
{
    const CLI::Option& flag = AddFlagOption(verb, sName, sDescription);
    return [&flag] { return flag.count() > 0; };
}

std::function<Adapter()> AddAdapterArgument(CLI::App& verb, Among among)
{
    const Text wanted = AddArgument(verb, ADAPTER_ARGUMENT,
                                    "Its name, GUID, index or hardware address; \"name:lan0\", \"guid:\", \"index:\" "
                                    "and \"mac:\" say which",
                                    "NAME|{GUID}|#INDEX|MAC");
    return [wanted, among] { return FindAdapter(wanted(), among); };
}

std::function<TOLVA::FAMILY_TYPE()> AddFamilyFlags(CLI::App& verb)
{
    CLI::Option& ipv4 = AddFlagOption(verb, "--ipv4", "IPv4 alone instead of both families");
    CLI::Option& ipv6 = AddFlagOption(verb, "--ipv6", "IPv6 alone instead of both families");
    ipv4.excludes(&ipv6);
    return [&] {
        return ipv4.count() > 0 ? TOLVA::FAMILY_IPV4 : ipv6.count() > 0 ? TOLVA::FAMILY_IPV6 : TOLVA::FAMILY_BOTH;
    };
}

CLI::App& AddRecordVerb(CLI::App& noun, Output& output, const VerbTexts& texts, std::vector<Field> fields,
                        std::function<Json(const Adapter&)> read)
{
    CLI::App& verb = AddVerb(noun, texts);
    AddFormFlags(verb, output, fields);
    verb.callback([&output, adapter = AddAdapterArgument(verb), fields = std::move(fields), read = std::move(read)] {
        output.Record(fields, read(adapter()));
    });
    return verb;
}

CLI::App& AddListVerb(CLI::App& noun, Output& output, const VerbTexts& texts, std::span<const Field> fields,
                      std::string sNone, std::function<Json(const Adapter&)> read)
{
    CLI::App& verb = AddVerb(noun, texts);
    AddFormFlags(verb, output, fields);
    verb.callback([&output, adapter = AddAdapterArgument(verb), fields, sNone = std::move(sNone),
                   read = std::move(read)] { output.List(fields, read(adapter()), sNone); });
    return verb;
}

void RunChange(CLI::App& verb, Output& output, std::function<Change()> plan)
{
    verb.callback(AddChange(verb, output, std::move(plan)));
}

std::function<void()> AddChange(CLI::App& verb, Output& output, std::function<Change()> plan)
{
    const Flag check = AddFlag(verb, "--check", "Show before and after, and change nothing");
    const Flag noVerify = AddFlag(verb, "--no-verify", "Do not read back whether the machine shows it");
    const Flag yes = AddFlag(verb, "--yes", "Do not ask, even if the change can cut off a session");
    AddJsonFlag(verb, output);
    return [=, &verb, &output, plan = std::move(plan)] {
        const ChangeOptions options{
            .bCheck = check(), .bVerify = !noVerify(), .bConsent = yes(), .bReadBack = IsReadBack(verb)};
        Perform(plan(), options, output);
    };
}

} // namespace zelkctl
