#pragma once

#include <cstdint>
#include <string>

namespace zelk
{

/// The system's text for a Windows error code, in its language and in one line; empty where it has none.
std::string SystemMessage(std::uint32_t code);

/// The same within a sentence, with the code, such as "Access is denied (5)".
std::string SystemText(std::uint32_t code);

} // namespace zelk
