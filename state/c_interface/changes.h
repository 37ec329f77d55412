#pragma once

#include <state/c_interface/arguments.h>
#include <state/c_interface/boundary.h>
#include <state/c_interface/progress.h>

namespace zelk
{

// What changes the machine, as the tool does it. Each throws ReportedError where nothing may be changed.

Answer ApplyDesiredState(const DesiredState& state, const ChangeOptions& options, ProgressCallback& progress);
Answer ListPending();
Answer Confirm(const ConfirmOptions& options);
Answer Restore(const RestoreOptions& options, ProgressCallback& progress);

} // namespace zelk
