#include <bit>
#include <cstring>

#include <support/trace/call_frame.h>
#include <support/values/socket_address.h>
#include <zelk_nm/tolva.h>

namespace
{

// Numbers are in host byte order, as callers compute with them; sockets have them in network byte order.

constexpr unsigned long NO_IPV4_ADDRESS = 0xFFFFFFFF;
constexpr unsigned char LONGEST_PREFIX = 32;

} // namespace

unsigned long TOLVA::ConvertIpAddressToDword(velmor::ip_address ip)
{
    const CallFrame frame("TOLVA::ConvertIpAddressToDword");
    if (!ip.is_valid())
    {
        frame.Fail("Invalid velmor::ip_address", "sAddress", ip);
        return NO_IPV4_ADDRESS;
    }
    frame.Verbose("sAddress", ip);
    if (!ip.is_ipv4())
    {
        frame.Fail("velmor::ip_address not IPv4");
        return NO_IPV4_ADDRESS;
    }
    const SOCKADDR_IN& sa = ip.sockaddr().Ipv4;
    if (sa.sin_family != AF_INET)
    {
        frame.Fail("velmor::ip_address IPv4 wrong family!");
        return NO_IPV4_ADDRESS;
    }
    const unsigned long dwIp = ::ntohl(sa.sin_addr.s_addr);
    frame.Verbose("dwIp", CallFrame::Hex{dwIp});
    frame.Succeed();
    return dwIp;
}

velmor::ip_address TOLVA::ConvertDwordToIpAddress(unsigned long dwIp)
{
    const CallFrame frame("TOLVA::ConvertDwordToIpAddress");
    frame.Verbose("dwIp", CallFrame::Hex{dwIp});
    SOCKADDR_IN sa = {};
    sa.sin_family = AF_INET;
    sa.sin_addr.s_addr = ::htonl(dwIp);
    const velmor::ip_address ip(sa);
    frame.Verbose("sAddress", ip);
    frame.Succeed();
    return ip;
}

unsigned char TOLVA::ConvertDwordToPrefix(unsigned long dwNetmask)
{
    const CallFrame frame("TOLVA::ConvertDwordToPrefix");
    frame.Verbose("dwNetmask", CallFrame::Hex{dwNetmask});
    const auto prefix = static_cast<unsigned char>(LONGEST_PREFIX - std::countr_zero(dwNetmask));
    frame.Verbose("prefix", prefix);
    frame.Succeed();
    return prefix;
}

unsigned long TOLVA::ConvertPrefixToDword(unsigned char prefix)
{
    const CallFrame frame("TOLVA::ConvertPrefixToDword");
    frame.Verbose("prefix", prefix);
    // 64 bits wide, so that the shift by all 32 is one that the language defines.
    const unsigned long dwNetmask =
        prefix <= LONGEST_PREFIX ? static_cast<unsigned long>(0xFFFFFFFFULL << (LONGEST_PREFIX - prefix)) : 0;
    frame.Verbose("dwNetmask", CallFrame::Hex{dwNetmask});
    frame.Succeed();
    return dwNetmask;
}

unsigned char TOLVA::ConvertNetmaskToPrefix(const velmor::ip_address& netmask)
{
    const CallFrame frame("TOLVA::ConvertNetmaskToPrefix");
    frame.Verbose("sNetmask", netmask);
    const unsigned char prefix = ConvertDwordToPrefix(ConvertIpAddressToDword(netmask));
    frame.Verbose("prefix", prefix);
    frame.Succeed();
    return prefix;
}

velmor::ip_address TOLVA::ConvertPrefixToNetmask(unsigned char prefix)
{
    const CallFrame frame("TOLVA::ConvertPrefixToNetmask");
    frame.Verbose("prefix", prefix);
    const velmor::ip_address netmask = ConvertDwordToIpAddress(ConvertPrefixToDword(prefix));
    frame.Verbose("sNetmask", netmask);
    frame.Succeed();
    return netmask;
}

velmor::ip_address TOLVA::Convert_SOCKET_ADDRESS(const SOCKET_ADDRESS& sa)
{
    const CallFrame frame("TOLVA::Convert_SOCKET_ADDRESS");
    const velmor::ip_address ip =
        sa.lpSockaddr != nullptr ? Convert_SOCKADDR_INET(velmor::CopySocketAddress(sa)) : velmor::ip_address();
    frame.Verbose("sIpAddr", ip);
    frame.Succeed();
    return ip;
}

velmor::ip_address TOLVA::Convert_SOCKADDR_INET(const SOCKADDR_INET& sa)
{
    const CallFrame frame("TOLVA::Convert_SOCKADDR_INET");
    frame.Verbose("sa.si_family", sa.si_family);
    const velmor::ip_address converted(sa);
    const velmor::ip_address ip = converted.is_valid() ? converted : velmor::ip_address();
    frame.Verbose("sIpAddr", ip);
    frame.Succeed();
    return ip;
}

SOCKADDR_INET TOLVA::Convert_SOCKADDR_INET(const velmor::ip_address& ip)
{
    const CallFrame frame("TOLVA::Convert_SOCKADDR_INET");
    frame.Verbose("sIpAddr", ip);
    SOCKADDR_INET sa = {};
    if (ip.is_valid())
        sa = ip.sockaddr();
    frame.Succeed();
    return sa;
}
