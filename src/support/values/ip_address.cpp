#include <zelk_nm/ip_address.h>

#include <cstring>
#include <string_view>

#include <support/values/address_text.h>
#include <zelk_nm/network_error.h>

namespace velmor
{
namespace
{

// Winsock may write more than the family's own structure, so it writes into the largest one.
bool ParseAs(int family, const char* pszText, SOCKADDR_INET& address) noexcept
{
    INT length = sizeof(address);
    address = {};
    // The platform declares the text changeable but does not change it.
    return ::WSAStringToAddressA(const_cast<char*>(pszText), family, nullptr, reinterpret_cast<SOCKADDR*>(&address),
                                 &length) == 0;
}

// What is formatted: the address with nothing else that would show, but a port that can be recognised and removed.
SOCKADDR_INET ForFormatting(const SOCKADDR_INET& address) noexcept
{
    SOCKADDR_INET bare = {};
    bare.si_family = address.si_family;
    if (address.si_family == AF_INET)
    {
        bare.Ipv4.sin_port = ::htons(99);
        bare.Ipv4.sin_addr = address.Ipv4.sin_addr;
    }
    else
    {
        bare.Ipv6.sin6_port = ::htons(99);
        bare.Ipv6.sin6_addr = address.Ipv6.sin6_addr;
    }
    return bare;
}

std::string_view WithoutPortAndBrackets(std::string_view text) noexcept
{
    constexpr std::string_view PORT = ":99";
    if (text.ends_with(PORT))
        text.remove_suffix(PORT.size());
    if (text.ends_with(']'))
    {
        text.remove_prefix(1);
        text.remove_suffix(1);
    }
    return text;
}

} // namespace

ip_address::ip_address() noexcept : m_address()
{
    m_address.si_family = AF_INET;
}

ip_address::ip_address(const velmor::string& sText) : m_address()
{
    m_address.si_family = INVALID_FAMILY;

    const char* pszText = sText.narrow_c_str();
    SOCKADDR_INET parsed;
    if (ParseAs(AF_INET, pszText, parsed))
    {
        m_address.si_family = AF_INET;
        m_address.Ipv4.sin_addr = parsed.Ipv4.sin_addr;
    }
    if (ParseAs(AF_INET6, pszText, parsed))
    {
        m_address = {};
        m_address.si_family = AF_INET6;
        m_address.Ipv6.sin6_addr = parsed.Ipv6.sin6_addr;
    }
}

ip_address::ip_address(const SOCKADDR_IN& sa) noexcept : m_address()
{
    m_address.Ipv4 = sa;
}

ip_address::ip_address(const SOCKADDR_IN6& sa) noexcept : m_address()
{
    m_address.Ipv6 = sa;
}

ip_address::ip_address(const SOCKADDR_INET& sa) noexcept : m_address()
{
    if (sa.si_family == AF_INET)
        m_address.Ipv4 = sa.Ipv4;
    else if (sa.si_family == AF_INET6)
        m_address.Ipv6 = sa.Ipv6;
    else
        m_address.si_family = INVALID_FAMILY;
}

ip_address::~ip_address() = default;

bool ip_address::operator==(const ip_address& other) const noexcept
{
    if (!is_valid() || family() != other.family())
        return false;
    if (is_ipv4())
        return m_address.Ipv4.sin_addr.s_addr == other.m_address.Ipv4.sin_addr.s_addr;
    return std::memcmp(&m_address.Ipv6.sin6_addr, &other.m_address.Ipv6.sin6_addr, sizeof(IN6_ADDR)) == 0;
}

bool FormatAddress(const ip_address& address, velmor::string& sText, int& code)
{
    code = WSAEAFNOSUPPORT;
    if (!address.is_valid())
        return false;

    SOCKADDR_INET bare = ForFormatting(address.sockaddr());
    char text[66] = {};
    DWORD length = sizeof(text);
    const DWORD size = address.is_ipv4() ? sizeof(SOCKADDR_IN) : sizeof(SOCKADDR_IN6);
    if (::WSAAddressToStringA(reinterpret_cast<SOCKADDR*>(&bare), size, nullptr, text, &length) != 0)
    {
        code = ::WSAGetLastError();
        return false;
    }
    // The length counts the terminator, where the platform keeps its word; the buffer is zeroed where it does not.
    const std::string_view whole(text, ::strnlen(text, sizeof(text)));
    sText = std::string(WithoutPortAndBrackets(whole)).c_str();
    return true;
}

ip_address::operator velmor::string() const
{
    velmor::string sText;
    int code = NO_ERROR;
    if (!FormatAddress(*this, sText, code))
        throw NetworkError(code);
    return sText;
}

} // namespace velmor
