#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>

#include <state/machine/adapter.h>

namespace zelk
{

class Reading;

/// What the link layer says of an interface.
struct Link
{
    bool filter = false; ///< a layer in front of another interface and none of its own
    std::optional<AdapterKind> kind;
    std::optional<bool> mediaConnected;
    std::optional<std::uint64_t> transmitSpeed; ///< bit/s
    std::optional<std::uint64_t> receiveSpeed;  ///< bit/s
};

/// By interface index.
using LinkTable = std::unordered_map<std::uint32_t, Link>;

/// All links of the machine: GetIfTable2, or before Vista GetIfTable. Empty, with the problem in the machine, when the
/// table cannot be read.
LinkTable ReadLinkTable(Reading& reading);

} // namespace zelk
