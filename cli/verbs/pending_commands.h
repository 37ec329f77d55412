#pragma once

#include <string>
#include <vector>

#include "parser/command.h"

namespace zelkctl
{

/// Adds the verbs about changes that wait to be confirmed or were interrupted.
void AddPendingCommands(Command tool);

/// What the user of a command should know of such changes, a sentence each; nothing where it is about them.
std::vector<std::string> PendingNotes(const std::string& sCommand);

/// What the process that watches over a change does; its arguments are zelk::WATCH_VERB and the change's id.
void WatchOverChange(const std::vector<std::string>& arguments);

} // namespace zelkctl
