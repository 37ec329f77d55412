#pragma once

#include <cstdint>

#include <state/values/guid.h>

namespace zelk
{

/// Binds IPv6 to an adapter or unbinds it, at once and for good. Waits up to five seconds for another program that
/// changes bindings. Gives the platform's code.
std::uint32_t BindIpv6(const Guid& adapter, bool wanted);

} // namespace zelk
