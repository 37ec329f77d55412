#pragma once

#include <string>
#include <vector>

#include "adapters/adapter.h"

namespace zelkctl
{

/// Something that is not known of an adapter because nobody wrote it, or because the system does not tell.
struct Gap
{
    bool bIncomplete;  ///< its record lacks something, and an operation with it; else only a convenience does
    std::string sText; ///< what is missing where, and what does not work for it; without a full stop
    /// Any one of these values would do. Where a key is looked for by what it holds, "*" stands for its name.
    std::vector<std::string> values;
};

/// Why the library could not complete the adapter's record, in the order in which it fills it. Empty when it could.
std::vector<Gap> GapsOf(const Adapter& adapter);

} // namespace zelkctl
