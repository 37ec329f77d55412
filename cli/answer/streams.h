#pragma once

#include <string_view>

namespace zelkctl
{

/// Writes to the standard output and throws Failure when that fails.
void WriteData(std::string_view text);

/// Writes a line to the error output.
void WriteNote(std::string_view text);

} // namespace zelkctl
