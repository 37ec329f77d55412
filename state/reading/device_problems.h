#pragma once

#include <cstdint>
#include <string>

namespace zelk
{

/// A device that somebody has switched off (CM_PROB_DISABLED).
inline constexpr std::uint32_t PROBLEM_DISABLED = 22;

/// What a problem code of the device manager means.
std::string DeviceProblemText(std::uint32_t code);

} // namespace zelk
