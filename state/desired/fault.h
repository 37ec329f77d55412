#pragma once

#include <cstdint>
#include <string>

namespace zelk
{

/// Why a desired state is refused.
enum class FaultKind : std::uint8_t
{
    MEANING, ///< it cannot be meant: wrong JSON, an unknown key, an address that no host can have
    ADAPTER, ///< it names an adapter that does not exist, or several at once
    SYSTEM   ///< this system or this adapter cannot do it
};

/// One thing that is wrong with a desired state.
struct Fault
{
    FaultKind kind = FaultKind::MEANING;
    std::string place; ///< JSON pointer (RFC 6901) to the value, such as "/adapters/0/ipv4/addresses/1"
    std::string text;  ///< what is wrong and what would be right

    bool operator==(const Fault&) const = default;
};

} // namespace zelk
