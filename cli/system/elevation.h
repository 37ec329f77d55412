#pragma once

namespace zelkctl
{

/// Whether the tool may change the machine: the Administrators group counts in its token. That is so for an elevated
/// prompt, for the system's own account in a boot image, and for every administrator before Vista.
bool IsElevated();

} // namespace zelkctl
