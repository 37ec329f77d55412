#pragma once

#include <vector>

#include <state/plan/plan.h>

namespace zelk
{

/// What the steps have touched, as it was configured before them: the targets and names to which they are taken back.
std::vector<Target> RestoredTargets(const Machine& before, const std::vector<Step>& steps);
DesiredIdentity RestoredIdentity(const Machine& before, const std::vector<Step>& steps);

/// What the steps touch of adapters whose configuration before them is not known, so that nothing can restore it. The
/// differences have no values.
std::vector<Difference> UnknownBefore(const Machine& before, const std::vector<Step>& steps);

} // namespace zelk
