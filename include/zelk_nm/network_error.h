#pragma once

#include <exception>
#include <string>

#include <zelk_nm/export.h>

/// \file
/// The exception velmor::NetworkError.

namespace velmor
{

/// A Winsock error. Only the conversion of velmor::ip_address to text throws it. Constant objects can be read from
/// several threads.
class ZELK_NM_API NetworkError : public std::exception
{
public:
    /// Creates the exception and its message.
    /// \param[in] code  a Winsock error code
    explicit NetworkError(int code);

    /// Destroys the exception.
    ~NetworkError() override;
    /// Returns "Network Error: code = " and the code in decimal. The text is valid for as long as the object.
    [[nodiscard]] const char* what() const noexcept override;
    /// Builds the message from the code. The constructor calls it.
    virtual void BuildMessage();
    /// Returns the same text as what().
    [[nodiscard]] virtual const std::string& Message() const noexcept;

    /// Returns the Winsock error code.
    [[nodiscard]] int Code() const noexcept { return m_code; }

private:
    int m_code;
    std::string m_sMessage;
};

} // namespace velmor
