#pragma once

#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

/// "IPv4", "IPv6" or "IPv4 and IPv6"; null for any other value.
const char* FamilyText(TOLVA::FAMILY_TYPE enFamilyType) noexcept;

/// Traces the family, or fails the operation for a value that is none.
bool CheckFamily(const CallFrame& frame, TOLVA::FAMILY_TYPE enFamilyType) noexcept;

constexpr bool IncludesIpv4(TOLVA::FAMILY_TYPE enFamilyType) noexcept
{
    return enFamilyType == TOLVA::FAMILY_BOTH || enFamilyType == TOLVA::FAMILY_IPV4;
}

constexpr bool IncludesIpv6(TOLVA::FAMILY_TYPE enFamilyType) noexcept
{
    return enFamilyType == TOLVA::FAMILY_BOTH || enFamilyType == TOLVA::FAMILY_IPV6;
}

inline bool Includes(TOLVA::FAMILY_TYPE enFamilyType, const velmor::ip_address& address) noexcept
{
    return (IncludesIpv4(enFamilyType) && address.is_ipv4()) || (IncludesIpv6(enFamilyType) && address.is_ipv6());
}

/// The answer of the family asked for; of both families both must be true.
constexpr bool AnswerFor(TOLVA::FAMILY_TYPE enFamilyType, bool bIpv4, bool bIpv6) noexcept
{
    if (enFamilyType == TOLVA::FAMILY_IPV4)
        return bIpv4;
    if (enFamilyType == TOLVA::FAMILY_IPV6)
        return bIpv6;
    return bIpv4 && bIpv6;
}
