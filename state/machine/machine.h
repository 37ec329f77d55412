#pragma once

#include <cstdint>
#include <vector>

#include <state/machine/adapter.h>
#include <state/machine/environment.h>
#include <state/machine/identity.h>
#include <state/machine/problem.h>
#include <state/machine/route.h>

namespace zelk
{

/// Of the JSON form of a machine and of its records: raised when a member is renamed, removed or changes its meaning,
/// not when one is added.
inline constexpr std::uint32_t SCHEMA_VERSION = 1;

/// A machine as one value: everything that this library can read of it. Two readings can be compared.
struct Machine
{
    Environment environment;
    Identity identity;
    /// Those in the address table in its order, then those that are installed and not running, by class subkey.
    std::vector<Adapter> adapters;
    /// Persistent routes whose next hop is on no adapter's network.
    std::vector<Route> unassignedRoutes;
    /// What concerns no single adapter.
    std::vector<Problem> problems;

    bool operator==(const Machine&) const = default;
};

} // namespace zelk
