#pragma once

#include <string>

namespace zelk
{

/// What tells this installation of Windows from others; empty where it does not tell.
std::string MachineId();

} // namespace zelk
