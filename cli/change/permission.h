#pragma once

#include <string>

namespace zelkctl
{

// What has to be granted before anything is changed. `sAdapter` is the name of the adapter that it is about; empty for
// none, or several.

/// Throws Failure where the tool may not change the machine.
void RequireElevation(const std::string& sAdapter);

/// Asks on a terminal whether sessions may be disconnected, unless that is confirmed already. Throws Failure otherwise.
void RequireConfirmation(const std::string& sAdapter, bool bConfirmed);

} // namespace zelkctl
