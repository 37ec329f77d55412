#pragma once

#include <state/desired/desired_state.h>
#include <state/machine/adapter.h>

namespace zelk
{

/// The desired state of an adapter with all that follows from it: settings for both families go to each, static
/// addresses end DHCP, and where addresses change without a word about gateways and routes, those stay that are still
/// within reach, whoever gave them.
DesiredAdapter Complete(const Adapter& adapter, const DesiredAdapter& desired);

} // namespace zelk
