#include <zelk_nm/network_error.h>

namespace velmor
{

NetworkError::NetworkError(int code) : m_code(code)
{
    NetworkError::BuildMessage();
}

NetworkError::~NetworkError() = default;

const char* NetworkError::what() const noexcept
{
    return m_sMessage.c_str();
}

void NetworkError::BuildMessage()
{
    m_sMessage = "Network Error: code = " + std::to_string(m_code);
}

const std::string& NetworkError::Message() const noexcept
{
    return m_sMessage;
}

} // namespace velmor
