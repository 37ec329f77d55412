#include <state/pending/utc_time.h>

#include <array>
#include <cstdio>

#include <winsock2.h>

#include <windows.h>

namespace zelk
{

std::string UtcNow()
{
    SYSTEMTIME now = {};
    ::GetSystemTime(&now);
    std::array<char, 32> text = {};
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02uT%02u:%02u:%02uZ", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute, now.wSecond);
    return text.data();
}

} // namespace zelk
