#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include <state/reading/reading.h>

namespace zelk
{

/// Prefix lengths of IPv4 addresses, by interface index and address.
using MaskTable = std::map<std::pair<std::uint32_t, IpAddress>, std::uint8_t>;

/// All that GetIpAddrTable tells, for systems whose adapter-address table has no prefix lengths. Empty, with the
/// problem in the machine, when the table cannot be read.
MaskTable ReadMaskTable(Reading& reading);

} // namespace zelk
