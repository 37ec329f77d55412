#pragma once

#include "parser/command.h"

namespace zelkctl
{

/// The command "doctor". It changes nothing and tells what keeps the tool and the library from working; its exit code
/// is EXIT_OPERATION_FAILED when something is wrong.
void AddDoctorCommand(Command tool);

} // namespace zelkctl
