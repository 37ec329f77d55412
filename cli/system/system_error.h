#pragma once

#include <stdexcept>
#include <string>

#include <state/platform/system_message.h>

namespace zelkctl
{

using zelk::SystemText;

/// A call of the platform failed.
class SystemError : public std::runtime_error
{
public:
    /// `sStep` completes "... failed", such as "creating a pipe". Without a code it is the calling thread's last error.
    explicit SystemError(const std::string& sStep);
    SystemError(const std::string& sStep, unsigned long ulCode);
};

} // namespace zelkctl
