#pragma once

#include <optional>

namespace zelk
{

/// Whether the token of this process has the rights of administrators, not only the user. Nothing, with the thread's
/// last error, where the system does not tell.
std::optional<bool> IsElevated();

} // namespace zelk
