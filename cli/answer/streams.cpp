#include "answer/streams.h"

#include <iostream>

#include "answer/failure.h"

namespace zelkctl
{

void WriteData(std::string_view text)
{
    if (!std::cout.write(text.data(), static_cast<std::streamsize>(text.size())).flush())
        throw Failure({.sReason = "writing to the standard output failed"});
}

void WriteNote(std::string_view text)
{
    std::cerr << text << '\n';
}

} // namespace zelkctl
