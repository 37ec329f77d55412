#include "fuzz.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace fuzz
{

void Require(bool holds, std::source_location where)
{
    if (holds)
        return;
    std::fprintf(stderr, "%s:%u: this does not hold\n", where.file_name(), static_cast<unsigned int>(where.line()));
    std::abort();
}

std::string_view TakeUntil(std::string_view& text, char separator)
{
    const std::size_t length = std::min(text.find(separator), text.size());
    const std::string_view taken = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return taken;
}

} // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Try({reinterpret_cast<const char*>(data), size});
    return 0;
}
