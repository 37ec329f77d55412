#include "parser/command.h"

#include <algorithm>
#include <utility>

#include <CLI/CLI.hpp>

#include "parser/suggestion.h"

namespace zelkctl
{
namespace
{

CLI::Option& AddFlagOption(CLI::App& parser, const std::string& sName, const std::string& sDescription)
{
    return *parser.add_flag(sName)->description(sDescription)->disable_flag_override();
}

CLI::Option& AddTextOption(CLI::App& parser, const ParameterHelp& help)
{
    return *parser.add_option(help.sName, help.sDescription)->option_text(help.sForm);
}

CLI::Option& AddListOption(CLI::App& parser, const ParameterHelp& help)
{
    return *AddTextOption(parser, help)
                .option_text(help.sForm + " ...")
                ->expected(1, CLI::detail::expected_max_vector_size)
                ->allow_extra_args();
}

GivenText TextOf(const CLI::Option& option)
{
    return [&option] { return option.count() > 0 ? option.as<std::string>() : std::string(); };
}

GivenTexts TextsOf(const CLI::Option& option)
{
    return
        [&option] { return option.count() > 0 ? option.as<std::vector<std::string>>() : std::vector<std::string>(); };
}

GivenFlag FlagOf(const CLI::Option& option)
{
    return [&option] { return option.count() > 0; };
}

std::vector<std::string> KeysOf(const std::vector<Field>& fields)
{
    std::vector<std::string> keys;
    for (const Field& field : fields)
        keys.push_back(field.sKey);
    return keys;
}

/// The words, separated by commas, in indented lines of a terminal's width.
std::string Lines(const std::vector<std::string>& words)
{
    constexpr std::size_t LONGEST = 78;
    std::string text;
    std::size_t length = LONGEST;
    for (const std::string& sWord : words)
    {
        const bool bFits = length + sWord.size() + 2 <= LONGEST;
        text += bFits ? " " : "\n  ";
        length = (bFits ? length + 1 : 2) + sWord.size() + 1;
        text += sWord + ',';
    }
    text.pop_back();
    return text;
}

/// Each of the words, which commas separate, is one of the values. Completion finds the values in the description.
CLI::Validator AllOf(const char* pszKind, const std::vector<std::string>& values)
{
    const auto Check = [=](const std::string& sText) {
        for (const std::string& sWord : CLI::detail::split(sText, ','))
            if (std::string sObjection = ObjectionTo(sWord, pszKind, values); !sObjection.empty())
                return sObjection;
        return std::string();
    };
    return {Check, '{' + CLI::detail::join(values, ",") + '}'};
}

/// "adapter list", without the tool's own name.
std::string CommandWords(const CLI::App& parser)
{
    const CLI::App* pParent = parser.get_parent();
    if (pParent == nullptr)
        return "";
    const std::string sBefore = CommandWords(*pParent);
    return sBefore + (sBefore.empty() ? "" : " ") + parser.get_name();
}

} // namespace

Command Command::AddNoun(const CommandHelp& help)
{
    Command noun = AddVerb(help);
    noun.m_pParser->require_subcommand(1);
    return noun;
}

Command Command::AddVerb(const CommandHelp& help)
{
    CLI::App& parser = *m_pParser->add_subcommand(help.sName, help.sDescription);
    parser.footer("Example:\n  zelkctl " + help.sExample);
    // Known before the rest is read: a wrong use is told of this command.
    parser.preparse_callback(
        [pRequest = m_pRequest, &parser](std::size_t) { pRequest->sCommand = CommandWords(parser); });
    return {parser, *m_pRequest};
}

void Command::AddRemark(const std::string& sRemark)
{
    const std::string sBefore = m_pParser->get_footer();
    m_pParser->footer(sBefore + (sBefore.empty() ? "" : "\n\n") + sRemark);
}

GivenText Command::AddArgument(const ParameterHelp& help)
{
    return TextOf(*AddTextOption(*m_pParser, help).required());
}

GivenText Command::AddOptionalArgument(const ParameterHelp& help, const std::vector<std::string>& values)
{
    CLI::Option& argument = AddTextOption(*m_pParser, help);
    if (!values.empty())
        argument.check(AllOf("value", values));
    return TextOf(argument);
}

GivenTexts Command::AddArguments(const ParameterHelp& help)
{
    return TextsOf(*AddListOption(*m_pParser, help).required());
}

GivenTexts Command::AddOptionalArguments(const ParameterHelp& help)
{
    return TextsOf(AddListOption(*m_pParser, help));
}

GivenText Command::AddOption(const ParameterHelp& help)
{
    return TextOf(AddTextOption(*m_pParser, help));
}

GivenText Command::AddChoice(const ParameterHelp& help, const std::vector<std::string>& values)
{
    return TextOf(*AddTextOption(*m_pParser, help).check(AllOf("value", values)));
}

GivenTexts Command::AddOptions(const ParameterHelp& help)
{
    return TextsOf(AddListOption(*m_pParser, help));
}

GivenTexts Command::AddRepeatedOption(const ParameterHelp& help)
{
    return TextsOf(*AddListOption(*m_pParser, help).option_text(help.sForm)->allow_extra_args(false));
}

GivenFlag Command::AddFlag(const std::string& sName, const std::string& sDescription)
{
    return FlagOf(AddFlagOption(*m_pParser, sName, sDescription));
}

std::pair<GivenFlag, GivenFlag> Command::AddAlternatives(const ParameterHelp& one, const ParameterHelp& other)
{
    CLI::Option& first = AddFlagOption(*m_pParser, one.sName, one.sDescription);
    CLI::Option& second = AddFlagOption(*m_pParser, other.sName, other.sDescription);
    first.excludes(&second);
    return {FlagOf(first), FlagOf(second)};
}

GivenFlag Command::AddHiddenFlag(const std::string& sName)
{
    return FlagOf(*AddFlagOption(*m_pParser, sName, "").group(""));
}

void Command::AddJsonFlag()
{
    AddJsonFlags("Print JSON instead of text", false);
}

void Command::AddJsonLinesFlag()
{
    AddJsonFlags("Print JSON, one object per line, instead of text", true);
}

void Command::AddJsonFlags(const char* pszDescription, bool bLines)
{
    CLI::Option& json = AddFlagOption(*m_pParser, "--json", pszDescription);
    json.each([pRequest = m_pRequest, bLines](const std::string&) {
        pRequest->form.bJson = true;
        pRequest->form.bJsonLines = bLines;
    });
    AddFlagOption(*m_pParser, "--ascii", "Escape everything in JSON that is not ASCII")
        .each([pRequest = m_pRequest](const std::string&) { pRequest->form.bAscii = true; })
        ->needs(&json);
}

void Command::AddGetOption(const std::vector<Field>& fields)
{
    const auto keys = KeysOf(fields);
    AddRemark("Fields:" + Lines(keys));
    m_pParser
        ->add_option_function<std::string>(
            "--get", [pRequest = m_pRequest](const std::string& sKey) { pRequest->form.sGet = sKey; },
            "Print only the values of this field, one per line")
        ->option_text("FIELD")
        ->check(AllOf("field", keys));
}

void Command::AddFormOptions(const std::vector<Field>& fields)
{
    AddJsonFlag();
    AddGetOption(fields);
}

void Command::AddColumnOptions(const std::vector<Field>& fields)
{
    m_pParser
        ->add_option_function<std::string>(
            "--fields",
            [pRequest = m_pRequest](const std::string& sKeys) {
                pRequest->form.columns = CLI::detail::split(sKeys, ',');
            },
            "Show these fields as the table's columns, separated by commas")
        ->option_text("FIELD,...")
        ->check(AllOf("field", KeysOf(fields)));
    AddFlagOption(*m_pParser, "--wide", "Show all columns, however wide the table becomes")
        .each([pRequest = m_pRequest](const std::string&) { pRequest->form.bWide = true; });
}

void Command::Answers(std::function<Json()> schema, std::function<Answer()> answer)
{
    if (schema)
        m_pRequest->schemas.emplace_back(CommandWords(*m_pParser), std::move(schema));
    m_pParser->callback([pRequest = m_pRequest, answer = std::move(answer)] { pRequest->answer = answer; });
}

} // namespace zelkctl
