#pragma once

#include <functional>
#include <string>

#include <CLI/CLI.hpp>

#include "adapter.h"
#include "output.h"

namespace zelkctl
{

// What the commands of every noun have in common. An example is what follows "zelkctl " on the command line.

void SetExample(CLI::App& app, const std::string& sExample);

/// One more paragraph at the end of the help.
void AddRemark(CLI::App& app, const std::string& sRemark);

/// A noun does nothing by itself: it needs one of its verbs.
CLI::App& AddNoun(CLI::App& app, const std::string& sName, const std::string& sDescription,
                  const std::string& sExample);
CLI::App& AddVerb(CLI::App& noun, const std::string& sName, const std::string& sDescription,
                  const std::string& sExample);

void AddJsonFlag(CLI::App& verb, Output& output);

/// Arguments are told apart by their place. `sForm` is what the help shows of the argument's text.
CLI::Option& AddArgument(CLI::App& verb, const std::string& sName, const std::string& sDescription,
                         const std::string& sForm);
/// The last argument of its verb, which can be given several times.
CLI::Option& AddArguments(CLI::App& verb, const std::string& sName, const std::string& sDescription,
                          const std::string& sForm);
/// The adapter that the verb is about, in the user's words.
CLI::Option& AddAdapterArgument(CLI::App& verb);

/// Makes an adapter the verb's argument, and `action` what the verb does with it.
void RunForAdapter(CLI::App& verb, std::function<void(const Adapter&)> action);

/// Likewise with the choice of one address family, both by default.
void RunForFamilies(CLI::App& verb, std::function<void(const Adapter&, TOLVA::FAMILY_TYPE)> action);

/// "IPv4", "IPv6", or "IPv4 and IPv6".
const char* FamilyText(TOLVA::FAMILY_TYPE enFamily);

} // namespace zelkctl
