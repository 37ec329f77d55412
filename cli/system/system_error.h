#pragma once

#include <stdexcept>
#include <string>

namespace zelkctl
{

/// What the system says about one of its error codes, followed by the code: "Access is denied (5)".
std::string SystemText(unsigned long ulCode);

/// A call of the platform failed.
class SystemError : public std::runtime_error
{
public:
    /// `sStep` completes "... failed", such as "creating a pipe". Without a code it is the calling thread's last error.
    explicit SystemError(const std::string& sStep);
    SystemError(const std::string& sStep, unsigned long ulCode);
};

} // namespace zelkctl
