#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "answer/answer.h"
#include "parser/request.h"

// The parser of command lines by its name alone: its header takes seconds to compile, and a verb needs none of it.
namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace zelkctl
{

/// What a command is called, and what its help says. The example is what follows "zelkctl " on the command line.
struct CommandHelp
{
    std::string sName;
    std::string sDescription;
    std::string sExample;
};

/// What an argument or an option is called, and what the help says of it; `sForm` is what its text looks like.
struct ParameterHelp
{
    std::string sName;
    std::string sDescription;
    std::string sForm;
};

// What the user gave is asked for when the whole command line was read; these are the questions.
using GivenText = std::function<std::string()>; ///< empty when it was not given
using GivenTexts = std::function<std::vector<std::string>()>;
using GivenFlag = std::function<bool()>;

/// A command of the tool: the tool itself, a noun, or a verb. Copies stand for the same command.
class Command
{
public:
    /// The tool itself. What is asked for is written to the request while the command line is read.
    Command(CLI::App& parser, Request& request) : m_pParser(&parser), m_pRequest(&request) {}

    /// A noun does nothing by itself: it needs one of its verbs.
    Command AddNoun(const CommandHelp& help);
    Command AddVerb(const CommandHelp& help);

    /// One more paragraph at the end of the help.
    void AddRemark(const std::string& sRemark);

    /// Arguments are told apart by their place.
    GivenText AddArgument(const ParameterHelp& help);
    /// One that can be left out. Where `values` are given it is one of them.
    GivenText AddOptionalArgument(const ParameterHelp& help, const std::vector<std::string>& values = {});
    /// The last argument of its verb, which can be given several times: once at least, or not at all.
    GivenTexts AddArguments(const ParameterHelp& help);
    GivenTexts AddOptionalArguments(const ParameterHelp& help);
    GivenText AddOption(const ParameterHelp& help);
    /// One whose text is one of the values.
    GivenText AddChoice(const ParameterHelp& help, const std::vector<std::string>& values);
    /// One that can be given several times, or with several values.
    GivenTexts AddOptions(const ParameterHelp& help);
    /// One that can be given several times, each time with one value.
    GivenTexts AddRepeatedOption(const ParameterHelp& help);
    GivenFlag AddFlag(const std::string& sName, const std::string& sDescription);
    /// Two flags of which only one can be given.
    std::pair<GivenFlag, GivenFlag> AddAlternatives(const ParameterHelp& one, const ParameterHelp& other);
    /// One that the help does not show.
    GivenFlag AddHiddenFlag(const std::string& sName);

    /// Lets the user choose JSON, and whether it holds ASCII only.
    void AddJsonFlag();
    /// Likewise of a verb that answers with any number of objects, one per line.
    void AddJsonLinesFlag();
    /// Lets the user choose a single field, where the answer is records with these fields.
    void AddGetOption(const std::vector<Field>& fields);
    /// Both.
    void AddFormOptions(const std::vector<Field>& fields);
    /// Lets the user choose the columns of a table as well.
    void AddColumnOptions(const std::vector<Field>& fields);
    [[nodiscard]] const Form& ChosenForm() const noexcept { return m_pRequest->form; }

    /// What the command does. It is not called while the command line is read. `schema` is that of the answer's value;
    /// a command without JSON has none.
    void Answers(std::function<Json()> schema, std::function<Answer()> answer);
    /// Of all commands of the tool.
    [[nodiscard]] const std::vector<CommandSchema>& AllSchemas() const noexcept { return m_pRequest->schemas; }

private:
    void AddJsonFlags(const char* pszDescription, bool bLines);

    CLI::App* m_pParser;
    Request* m_pRequest;
};

} // namespace zelkctl
