#pragma once

#include <optional>

#include <state/fields/json.h>
#include <state/pending/guarded_apply.h>

namespace zelk
{

// What programs read of a change that is planned or was made, with all that is pending on the machine, as far as this
// process may know it.

Json PlanToJson(const Plan& plan);

/// @param pending  the change itself, when it can still be taken back
Json ChangeToJson(const ApplyResult& result, const Plan& plan, const std::optional<PendingChange>& pending = {});

} // namespace zelk
