#pragma once

#include <vector>

#include <state/plan/plan.h>

namespace zelk
{

/// What the steps have touched, as it was configured before them: the targets and names to which they are taken back.
std::vector<Target> RestoredTargets(const Machine& before, const std::vector<Step>& steps);
DesiredIdentity RestoredIdentity(const Machine& before, const std::vector<Step>& steps);

} // namespace zelk
