#include "parser/command_line.h"

#include <algorithm>
#include <utility>

#include <CLI/CLI.hpp>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "parser/suggestion.h"

namespace zelkctl
{
namespace
{

/// "help NOUN VERB" and "/?" are other words for --help.
std::vector<std::string> Translated(std::vector<std::string> arguments)
{
    if (!arguments.empty() && arguments.front() == "help")
    {
        arguments.erase(arguments.begin());
        arguments.emplace_back("--help");
    }
    std::ranges::replace(arguments, "/?", "--help");
    return arguments;
}

std::vector<std::string> NamesOf(const std::vector<const CLI::App*>& commands)
{
    std::vector<std::string> names;
    for (const CLI::App* pCommand : commands)
        names.push_back(pCommand->get_name());
    return names;
}

std::vector<std::string> VerbsOf(const CLI::App& command)
{
    return NamesOf(command.get_subcommands([](const CLI::App*) { return true; }));
}

std::vector<std::string> OptionsOf(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::Option* pOption : command.get_options())
        for (const std::string& sName : pOption->get_lnames())
            names.push_back("--" + sName);
    return names;
}

/// The commands of the line, from the tool down to the verb.
std::vector<const CLI::App*> ChosenCommands(const CLI::App& tool)
{
    std::vector<const CLI::App*> commands = {&tool};
    while (!commands.back()->get_subcommands().empty())
        commands.push_back(commands.back()->get_subcommands().front());
    return commands;
}

/// "zelkctl adapter list"
std::string FullName(const CLI::App& command)
{
    const CLI::App* pParent = command.get_parent();
    return (pParent != nullptr ? FullName(*pParent) + ' ' : "") + command.get_name();
}

std::string Suggestion(const std::string& sWord, const std::vector<std::string>& candidates)
{
    const std::string sClosest = ClosestTo(sWord, candidates);
    return sClosest.empty() ? "" : "Did you mean " + Quoted(sClosest) + "? ";
}

Failure Misuse(const std::string& sReason, const std::string& sHint)
{
    return Failure({.code = EXIT_USAGE, .sReason = sReason, .sHint = sHint});
}

std::string ListOfVerbs(const CLI::App& command)
{
    const bool bTool = command.get_parent() == nullptr;
    return (bTool ? "The commands are " : "The verbs are ") + Enumeration(VerbsOf(command)) + '.';
}

Failure MissingVerb(const CLI::App& noun)
{
    return Misuse(Quoted(FullName(noun)) + " needs a verb", ListOfVerbs(noun));
}

/// What stands on the line of this command and is none of what the command knows.
Failure UnknownWord(const CLI::App& command, const std::string& sWord)
{
    const std::string sCommand = Quoted(FullName(command));
    const std::string sHelp = "Run \"" + FullName(command) + " --help\" to see how it is used.";
    if (sWord.starts_with('-') && sWord.size() > 1)
        return Misuse(sCommand + " has no option " + Quoted(sWord), Suggestion(sWord, OptionsOf(command)) + sHelp);
    const auto verbs = VerbsOf(command);
    if (verbs.empty())
        return Misuse(Quoted(sWord) + " is one argument too many for " + sCommand, sHelp);
    const char* pszKind = command.get_parent() == nullptr ? " is not a command of " : " is not a verb of ";
    return Misuse(Quoted(sWord) + pszKind + sCommand, Suggestion(sWord, verbs) + ListOfVerbs(command));
}

void RefuseUnknownWords(const CLI::App& tool)
{
    for (const CLI::App* pCommand : ChosenCommands(tool))
        if (const auto unknown = pCommand->remaining(false); !unknown.empty())
            throw UnknownWord(*pCommand, unknown.front());
}

Failure FailureOf(const CLI::App& tool, const CLI::ParseError& error)
{
    const CLI::App& last = *ChosenCommands(tool).back();
    if (!VerbsOf(last).empty() && error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError))
        return MissingVerb(last);
    return Misuse(Printable(error.what()), "Run \"" + FullName(last) + " --help\" to see how it is used.");
}

} // namespace

void ReadCommandLine(CLI::App& parser, std::vector<std::string> arguments, Request& request)
{
    arguments = Translated(std::move(arguments));
    // Before they are read: an error in them is to be told in this form too.
    request.form.bJson = std::ranges::find(arguments, "--json") != arguments.end();
    std::ranges::reverse(arguments); // the parser takes them from the back
    try
    {
        parser.parse(std::move(arguments));
    }
    catch (const CLI::CallForHelp&)
    {
        RefuseUnknownWords(parser);
        request.answer = [sHelp = parser.help()] { return Answer{.value = {}, .text = sHelp}; };
        request.form = {};
    }
    catch (const CLI::ParseError& error)
    {
        RefuseUnknownWords(parser);
        throw FailureOf(parser, error);
    }
}

} // namespace zelkctl
