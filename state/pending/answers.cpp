#include <state/pending/answers.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>

#include <icmpapi.h>

#include <state/platform/handles.h>

namespace zelk
{
namespace
{

using UniqueIcmp = std::unique_ptr<void, Release<::IcmpCloseHandle>>;

constexpr std::array<char, 4> DATA = {'Z', 'E', 'L', 'K'};
constexpr std::size_t REPLY_SIZE = 512;
/// Where ICMPV6_ECHO_REPLY, which not every compiler's headers have, has its status: after a packed address of 26
/// bytes.
constexpr std::size_t STATUS_OF_REPLY6 = 28;

/// Nothing for the handle that says so: not every system takes that one back.
UniqueIcmp Owned(HANDLE icmp)
{
    return UniqueIcmp(icmp != INVALID_HANDLE_VALUE ? icmp : nullptr);
}

template <class Address>
void CopyBytes(const IpAddress& host, Address& to)
{
    std::ranges::copy(host.Bytes(), reinterpret_cast<std::uint8_t*>(&to));
}

bool Answers4(const IpAddress& host, DWORD timeout)
{
    const UniqueIcmp icmp = Owned(::IcmpCreateFile());
    if (!icmp)
        return false;
    IPAddr address = 0;
    CopyBytes(host, address);
    alignas(ICMP_ECHO_REPLY) std::array<std::byte, REPLY_SIZE> reply = {};
    const DWORD count = ::IcmpSendEcho(icmp.get(), address, const_cast<char*>(DATA.data()), DATA.size(), nullptr,
                                       reply.data(), REPLY_SIZE, timeout);
    return count > 0 && reinterpret_cast<const ICMP_ECHO_REPLY*>(reply.data())->Status == IP_SUCCESS;
}

bool Answers6(const IpAddress& host, DWORD timeout)
{
    const UniqueIcmp icmp = Owned(::Icmp6CreateFile());
    if (!icmp)
        return false;
    sockaddr_in6 source = {};
    sockaddr_in6 destination = {};
    source.sin6_family = destination.sin6_family = AF_INET6;
    CopyBytes(host, destination.sin6_addr);
    std::array<std::byte, REPLY_SIZE> reply = {};
    const DWORD count =
        ::Icmp6SendEcho2(icmp.get(), nullptr, nullptr, nullptr, &source, &destination, const_cast<char*>(DATA.data()),
                         DATA.size(), nullptr, reply.data(), REPLY_SIZE, timeout);
    DWORD status = IP_GENERAL_FAILURE;
    std::memcpy(&status, reply.data() + STATUS_OF_REPLY6, sizeof(status));
    return count > 0 && status == IP_SUCCESS;
}

} // namespace

bool Answers(const IpAddress& host, std::chrono::milliseconds timeout)
{
    const auto milliseconds = static_cast<DWORD>(timeout.count());
    return host.IsIpv4() ? Answers4(host, milliseconds) : Answers6(host, milliseconds);
}

} // namespace zelk
