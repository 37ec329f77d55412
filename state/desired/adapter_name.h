#pragma once

#include <string_view>
#include <vector>

#include <state/machine/machine.h>

namespace zelk
{

/// The adapters that a text names: a connection or friendly name (letter case does not count), an interface index, a
/// hardware address or a GUID; or one of these alone behind "name:", "index:", "mac:" or "guid:". Of several the hidden
/// ones are left out.
std::vector<const Adapter*> FindAdapters(const Machine& machine, std::string_view text);

} // namespace zelk
