#pragma once

#include <zelk_nm/tolva.h>

namespace zelkctl
{

constexpr bool HasIpv4(TOLVA::FAMILY_TYPE enFamily) noexcept
{
    return enFamily != TOLVA::FAMILY_IPV6;
}

constexpr bool HasIpv6(TOLVA::FAMILY_TYPE enFamily) noexcept
{
    return enFamily != TOLVA::FAMILY_IPV4;
}

/// "IPv4", "IPv6", or "IPv4 and IPv6".
constexpr const char* FamilyText(TOLVA::FAMILY_TYPE enFamily) noexcept
{
    if (enFamily == TOLVA::FAMILY_BOTH)
        return "IPv4 and IPv6";
    return enFamily == TOLVA::FAMILY_IPV4 ? "IPv4" : "IPv6";
}

} // namespace zelkctl
