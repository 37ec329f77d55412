#pragma once

#include <string>
#include <vector>

#include "parser/command.h"

namespace zelkctl
{

/// The noun "adapter" with its verbs.
void AddAdapterCommands(Command tool);

/// "adapter list" and the tool without arguments: those that are wanted, or else all that work, or all.
std::vector<Field> AdapterListFields();
Answer ListAdapters(const std::vector<std::string>& wanted, bool bAll);

} // namespace zelkctl
