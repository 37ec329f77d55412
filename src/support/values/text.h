#pragma once

// Values: addresses, texts and numbers as the library compares, parses and formats them. Nothing here asks the system
// but Winsock, for the text of an address, and nothing is traced. The public ones are declared in include/zelk_nm.

#include <cwchar>

#include <zelk_nm/string.h>

namespace velmor
{

inline bool EqualIgnoringCase(const string& left, const string& right) noexcept
{
    return ::_wcsicmp(left.c_str(), right.c_str()) == 0;
}

} // namespace velmor
