#pragma once

#include <state/fields/json.h>
#include <state/pending/guarded_apply.h>

namespace zelk
{

// What programs read of pending changes that were dealt with.

Json ConfirmationToJson(const PendingResult& result);
Json RestorationToJson(const PendingResult& result);

} // namespace zelk
