#include "system/system_error.h"

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{

SystemError::SystemError(const std::string& sStep) : SystemError(sStep, ::GetLastError()) {}

SystemError::SystemError(const std::string& sStep, unsigned long ulCode)
    : std::runtime_error(sStep + " failed: " + SystemText(ulCode))
{
}

} // namespace zelkctl
