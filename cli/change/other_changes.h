#pragma once

#include <optional>

#include <state/pending/pending_change.h>

#include "answer/failure.h"

namespace zelkctl
{

// Why a change has to wait for another one.

/// Another process is changing the machine; who, where that is known.
Failure BusyFailure(const std::optional<zelk::Changer>& holder);

/// Another change waits to be confirmed, or is being restored.
Failure AwaitedFailure(const zelk::PendingChange& other);

} // namespace zelkctl
