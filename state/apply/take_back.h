#pragma once

#include <vector>

#include <state/apply/apply.h>
#include <state/apply/stored_form.h>

namespace zelk
{

/// Takes the machine back to targets and names that it had before, and then the registry to the letter. It is not
/// cancelled, and blocks until all is as before or the time is over.
Undo TakeBack(std::vector<Target> targets, const DesiredIdentity& identity, const StoredForm& storedForm,
              const ApplyOptions& options);

} // namespace zelk
