#pragma once

#include <cstdint>

#include <state/plan/step.h>

namespace zelk
{

/// Writes a setting of an adapter's IPv4 into the registry. Gives the platform's code.
std::uint32_t ChangeStoredSetting(const Guid& adapter, const StoredSetting& setting);

} // namespace zelk
