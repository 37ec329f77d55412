#pragma once

#include <string>
#include <vector>

#include "parser/command.h"

namespace zelkctl
{

/// What the scripts call, with the words of the command line behind it. It is not a command for people.
inline constexpr const char* COMPLETE_VERB = "__complete";

/// "completion bash" and "completion powershell".
void AddCompletionCommands(Command tool);

/// Writes the candidates for the last of the arguments, one a line. Whatever goes wrong leads to no candidate.
void AnswerCompletion(const CLI::App& tool, const std::vector<std::string>& arguments) noexcept;

} // namespace zelkctl
