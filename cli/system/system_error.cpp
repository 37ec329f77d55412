#include "system/system_error.h"

#include <state/platform/system_message.h>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{

std::string SystemText(unsigned long ulCode)
{
    std::string sText = zelk::SystemMessage(ulCode);
    if (sText.ends_with('.'))
        sText.pop_back();
    const std::string sCode = std::to_string(ulCode);
    return sText.empty() ? "error " + sCode : sText + " (" + sCode + ')';
}

SystemError::SystemError(const std::string& sStep) : SystemError(sStep, ::GetLastError()) {}

SystemError::SystemError(const std::string& sStep, unsigned long ulCode)
    : std::runtime_error(sStep + " failed: " + SystemText(ulCode))
{
}

} // namespace zelkctl
