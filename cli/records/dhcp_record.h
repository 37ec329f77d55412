#pragma once

#include <span>

#include <zelk_nm/tolva.h>

#include "answer/output.h"

namespace zelkctl
{

/// The state of these families' DHCP. What cannot be read is null.
Json DhcpOf(const TOLVA::NIC_INFO& info, TOLVA::FAMILY_TYPE enFamily);
std::span<const Field> DhcpFields(TOLVA::FAMILY_TYPE enFamily);

} // namespace zelkctl
