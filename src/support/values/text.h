#pragma once

#include <cwchar>

#include <zelk_nm/string.h>

namespace velmor
{

inline bool EqualIgnoringCase(const string& left, const string& right) noexcept
{
    return ::_wcsicmp(left.c_str(), right.c_str()) == 0;
}

} // namespace velmor
