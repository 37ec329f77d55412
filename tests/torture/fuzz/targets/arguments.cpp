// The tool's command line: a small tool with one of each kind of argument either answers or says what is wrong.

#include <CLI/CLI.hpp>
#include <state/fields/json_value.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "events/condition.h"
#include "fuzz.h"
#include "machine.h"
#include "parser/command.h"
#include "parser/command_line.h"
#include "parser/help_format.h"
#include "system/utf8.h"

namespace
{

using namespace zelkctl;

Answer TextAnswer(std::vector<std::string> words)
{
    Answer answer;
    for (const std::string& sWord : words)
        answer.text = answer.text.value_or("") + sWord + '\n';
    return answer;
}

void AddVerbs(Command tool)
{
    Command noun = tool.AddNoun({"address", "Addresses", "address add lan0 192.0.2.1/24"});
    Command add = noun.AddVerb({"add", "Add addresses", "address add lan0 192.0.2.1/24"});
    const auto adapter = add.AddArgument({"ADAPTER", "Which", "NAME"});
    const auto networks = add.AddArguments({"ADDRESS", "What", "ADDRESS/LENGTH"});
    const auto [one, other] = add.AddAlternatives({"--active", "Now", ""}, {"--stored", "Later", ""});
    add.AddJsonFlag();
    add.Answers({}, [=, one = one, other = other] {
        fuzz::Require(!adapter().empty() || !networks().empty());
        fuzz::Require(!(one() && other()));
        return TextAnswer(networks());
    });
    Command list = noun.AddVerb({"list", "List them", "address list"});
    const auto level = list.AddOptionalArgument({"LEVEL", "Which", "0-4"}, {"0", "1", "2"});
    const auto until = list.AddRepeatedOption({"--until", "Until then", "FIELD=VALUE"});
    const auto options = list.AddOptions({"--dns", "Servers", "ADDRESS"});
    list.AddFormOptions({{.sKey = "name", .sLabel = "Name"}, {.sKey = "ipv4.addresses", .sLabel = "Addresses"}});
    list.AddColumnOptions({{.sKey = "name", .sLabel = "Name"}});
    list.Answers({}, [=] {
        static const Json lan0 = zelk::JsonValue<zelk::Adapter>::Write(fuzz::SmallMachine().adapters.front());
        fuzz::Require(level().size() <= 5);
        for (const std::string& sText : until())
        {
            const Condition condition(sText);
            fuzz::Require(Condition(condition.Text()).Text() == condition.Text());
            static_cast<void>(condition.Holds(lan0));
        }
        return TextAnswer(options());
    });
}

} // namespace

void fuzz::Try(std::string_view text)
{
    std::vector<std::string> arguments;
    while (!text.empty())
        arguments.push_back(ToUtf8(FromUtf8(TakeUntil(text, '\n'))));
    Request request;
    CLI::App parser("A tool", "zelkctl");
    parser.allow_windows_style_options(false);
    parser.require_subcommand(1);
    parser.formatter(std::make_shared<HelpFormatter>());
    AddVerbs(Command(parser, request));
    try
    {
        ReadCommandLine(parser, arguments, request);
        Require(static_cast<bool>(request.answer));
        request.answer();
    }
    catch (const Failure& failure)
    {
        Require(failure.What().code == EXIT_USAGE && !failure.What().sReason.empty());
        Require(Printable(failure.What().sReason) == failure.What().sReason);
    }
}
