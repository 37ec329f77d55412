#pragma once

#include <string>
#include <vector>

namespace zelkctl
{

/// The names of all connections, those of disabled adapters too, asked of the platform: the library would trace it, and
/// what is typed at a prompt must not push out the trace of what was done last. Empty when they cannot be found out.
std::vector<std::string> ConnectionNames();

} // namespace zelkctl
