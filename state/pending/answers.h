#pragma once

#include <chrono>

#include <state/values/ip_address.h>

namespace zelk
{

/// Whether a host answers one echo request in time.
bool Answers(const IpAddress& host, std::chrono::milliseconds timeout);

} // namespace zelk
