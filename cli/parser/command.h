#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "adapters/adapter.h"
#include "answer/output.h"
#include "change/change.h"
#include "parser/command_line.h"

namespace zelkctl
{

// What the commands of every noun have in common. An example is what follows "zelkctl " on the command line.

void SetExample(CLI::App& app, const std::string& sExample);

/// One more paragraph at the end of the help.
void AddRemark(CLI::App& app, const std::string& sRemark);

/// What a verb is called, and what its help says.
struct VerbTexts
{
    std::string sName;
    std::string sDescription;
    std::string sExample;
};

/// A noun does nothing by itself: it needs one of its verbs.
CLI::App& AddNoun(CLI::App& app, const VerbTexts& texts);
CLI::App& AddVerb(CLI::App& noun, const VerbTexts& texts);
/// What the verb does when the command line was read.
void Run(CLI::App& verb, std::function<void()> action);

// What the user gave is asked for when the command line was read; these are the questions.
using Text = std::function<std::string()>; ///< empty when it was not given
using Texts = std::function<std::vector<std::string>()>;
using Flag = std::function<bool()>;

/// Gives a command that shows something the choice of form: text, --json, or --get with one of the fields' keys.
void AddFormFlags(CLI::App& command, Output& output, std::span<const Field> fields);
/// The last of them, for a command that has --json already.
void AddGetOption(CLI::App& command, Output& output, std::span<const Field> fields);
/// Without fields to choose from.
void AddJsonFlag(CLI::App& command, Output& output);

/// Arguments are told apart by their place. `sForm` is what the help shows of the argument's text.
Text AddArgument(CLI::App& verb, const std::string& sName, const std::string& sDescription, const std::string& sForm);
/// One that can be left out. Where `values` are given it is one of them.
Text AddOptionalArgument(CLI::App& verb, const std::string& sName, const std::string& sDescription,
                         const std::string& sForm, const std::vector<std::string>& values = {});
/// The last argument of its verb, which can be given several times.
Texts AddArguments(CLI::App& verb, const std::string& sName, const std::string& sDescription, const std::string& sForm);
Text AddOption(CLI::App& verb, const std::string& sName, const std::string& sDescription, const std::string& sForm);
Flag AddFlag(CLI::App& verb, const std::string& sName, const std::string& sDescription);

inline constexpr const char* ADAPTER_ARGUMENT = "ADAPTER";
/// Makes an adapter, in the user's words, the verb's argument. The answer is for when the command line was read.
std::function<Adapter()> AddAdapterArgument(CLI::App& verb, Among among = Among::ENABLED);
/// Makes the choice of one address family the verb's, both by default.
std::function<TOLVA::FAMILY_TYPE()> AddFamilyFlags(CLI::App& verb);

/// A verb that shows one record of an adapter.
CLI::App& AddRecordVerb(CLI::App& noun, Output& output, const VerbTexts& texts, std::vector<Field> fields,
                        std::function<Json(const Adapter&)> read);
/// A verb that shows a list of records of an adapter; without one it says `sNone`.
CLI::App& AddListVerb(CLI::App& noun, Output& output, const VerbTexts& texts, std::span<const Field> fields,
                      std::string sNone, std::function<Json(const Adapter&)> read);

/// What the tool asks of itself where only another process can read back; it stands before the noun.
inline constexpr const char* READ_BACK = "--read-back";
void AddReadBackFlag(CLI::App& app, Output& output);

/// Makes the verb one that changes something: `plan` is asked for the change when the command line was read. Adds
/// --check, --no-verify, --yes and --json.
void RunChange(CLI::App& verb, Output& output, std::function<Change()> plan);

/// Likewise for a verb that does so only at times: gives what does it.
std::function<void()> AddChange(CLI::App& verb, Output& output, std::function<Change()> plan);

} // namespace zelkctl
