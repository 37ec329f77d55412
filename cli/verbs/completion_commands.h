#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// What the scripts call, with the words of the command line behind it. It is no command that people are shown.
inline constexpr const char* COMPLETE_VERB = "__complete";

/// "completion bash" and "completion powershell".
void AddCompletionCommands(CLI::App& app, Output& output);

/// Writes the candidates for the last of the arguments, one a line. What goes wrong shows as no candidate.
void AnswerCompletion(const CLI::App& app, std::vector<std::string> arguments) noexcept;

} // namespace zelkctl
