// What the parsers ask the platform for, done for this machine: its wide characters have 32 bits, so that a character
// beyond U+FFFF is one of them here and two on Windows.

#include <state/platform/system_message.h>
#include <state/platform/utf8.h>

namespace zelk
{

std::string SystemText(std::uint32_t code)
{
    return "error " + std::to_string(code);
}

} // namespace zelk
