#pragma once

#include <span>
#include <string>

namespace zelkctl
{

/// What people read instead of one of the platform's numbers.
struct Word
{
    unsigned long value;
    const char* pszText;
};

/// The word for the value. One that has none is told by its number, as the library's own printers do.
std::string WordOf(std::span<const Word> words, unsigned long value);

} // namespace zelkctl
