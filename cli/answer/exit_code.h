#pragma once

#include <state/answers/exit_code.h>

namespace zelkctl
{

using zelk::ExitCode;
using enum zelk::ExitCode;

} // namespace zelkctl
