#pragma once

#include <vector>

#include <state/machine/machine.h>

#include "records/finding.h"

namespace zelkctl
{

/// Which adapters there are, and which of them do not work.
std::vector<Finding> ExamineAdapters(const zelk::Machine& machine);

/// What is not known of each adapter that works because nobody wrote it.
std::vector<Finding> ExamineRecords(const zelk::Machine& machine);

/// What could not be read.
std::vector<Finding> ExamineReading(const zelk::Machine& machine);

} // namespace zelkctl
