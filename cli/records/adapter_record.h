#pragma once

#include <span>
#include <vector>

#include "adapters/adapter.h"
#include "answer/output.h"

namespace zelkctl
{

/// What the list shows of an adapter. Anything that the library could not find out is null.
Json SummaryOf(const Adapter& adapter);
std::span<const Field> SummaryFields();

/// Everything that the library can read of an adapter.
Json DetailsOf(const Adapter& adapter);
std::vector<Field> DetailFields();

} // namespace zelkctl
