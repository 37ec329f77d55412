#pragma once

#include <ostream>

#include <zelk_nm/ip_address.h>
#include <zelk_nm/string.h>

// How GoogleTest shows the library's values when a test fails.

namespace velmor
{

inline void PrintTo(const string& text, std::ostream* pStream)
{
    *pStream << '"' << text.narrow_c_str() << '"';
}

inline void PrintTo(const ip_address& address, std::ostream* pStream)
{
    *pStream << (address.is_valid() ? string(address) : string(L"<invalid>")).narrow_c_str();
}

} // namespace velmor
