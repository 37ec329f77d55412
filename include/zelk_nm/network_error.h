#pragma once

#include <exception>
#include <string>

#include <zelk_nm/export.h>

/// @file
/// The one exception of the library.

namespace velmor
{

/// Thrown by the text conversion of velmor::ip_address, and by nothing else in the library. Const access is safe from
/// several threads.
class ZELK_NM_API NetworkError : public std::exception
{
public:
    /// `code` is a Winsock error code.
    explicit NetworkError(int code);

    /// Frees the message.
    ~NetworkError() override;
    /// "Network Error: code = " and the code in decimal.
    [[nodiscard]] const char* what() const noexcept override;
    /// Makes the message from the code; the constructor calls it.
    virtual void BuildMessage();
    /// The same text.
    [[nodiscard]] virtual const std::string& Message() const noexcept;

    /// The Winsock error code.
    [[nodiscard]] int Code() const noexcept { return m_code; }

private:
    int m_code;
    std::string m_sMessage;
};

} // namespace velmor
