#pragma once

#include <string>

namespace zelk
{

/// The date and time of day, such as "2026-01-31T23:59:59Z". For people: a clock can be set back.
std::string UtcNow();

} // namespace zelk
