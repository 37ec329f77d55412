// The tool's command line: a small tool with one argument of each kind either answers or says what is wrong.

#include <CLI/CLI.hpp>
#include <state/fields/json_value.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "events/condition.h"
#include "fuzz.h"
#include "parser/command.h"
#include "parser/command_line.h"
#include "parser/help_format.h"
#include "system/utf8.h"

namespace
{

using namespace zelkctl;

void AddAdd(Command noun)
{
    Command verb = noun.AddVerb({"add", "Add", "address add lan0 192.0.2.1/24"});
    const auto adapter = verb.AddArgument({"ADAPTER", "Which", "NAME"});
    const auto addresses = verb.AddArguments({"ADDRESS", "What", "ADDRESS/LENGTH"});
    const auto alternatives = verb.AddAlternatives({"--active", "Now", ""}, {"--stored", "Later", ""});
    verb.AddJsonFlag();
    verb.Answers({}, [=] {
        fuzz::Require(!adapter().empty() || !addresses().empty());
        fuzz::Require(!alternatives.first() || !alternatives.second());
        return Answer();
    });
}

void CheckCondition(const std::string& sText)
{
    static const Json lan0 = zelk::JsonValue<zelk::Adapter>::Write(fuzz::SmallMachine().adapters.front());
    const Condition condition(sText);
    const Condition same(condition.Text());
    fuzz::Require(same.Text() == condition.Text() && same.Holds(lan0) == condition.Holds(lan0));
}

void AddList(Command noun)
{
    Command verb = noun.AddVerb({"list", "List", "address list"});
    const auto level = verb.AddOptionalArgument({"LEVEL", "Which", "0-2"}, {"0", "1", "2"});
    const auto conditions = verb.AddRepeatedOption({"--until", "Until then", "FIELD=VALUE"});
    const auto servers = verb.AddOptions({"--dns", "Servers", "ADDRESS"});
    verb.AddFormOptions({{.sKey = "name", .sLabel = "Name"}, {.sKey = "ipv4.addresses", .sLabel = "Addresses"}});
    verb.AddColumnOptions({{.sKey = "name", .sLabel = "Name"}});
    verb.Answers({}, [=] {
        fuzz::Require(level().find_first_not_of("012,") == std::string::npos);
        servers();
        for (const std::string& sText : conditions())
            CheckCondition(sText);
        return Answer();
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
    const Command noun = Command(parser, request).AddNoun({"address", "Addresses", "address list"});
    AddAdd(noun);
    AddList(noun);
    try
    {
        ReadCommandLine(parser, arguments, request);
        request.answer();
    }
    catch (const Failure& failure)
    {
        const std::string& sReason = failure.What().sReason;
        Require(failure.What().code == EXIT_USAGE && !sReason.empty() && Printable(sReason) == sReason);
    }
}
