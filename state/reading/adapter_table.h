#pragma once

#include <state/reading/link_table.h>
#include <state/reading/reading.h>

namespace zelk
{

/// Adds every adapter of the adapter-address table (GetAdaptersAddresses) with what that table tells of it, but for
/// those that the link table knows as filters of others. False, with the problem in the machine, when the table cannot
/// be read.
bool ReadAdapterTable(Reading& reading, const LinkTable& links);

} // namespace zelk
