#pragma once

#include <span>

#include <zelk_nm/tolva.h>

#include "output.h"

namespace zelkctl
{

/// The next hops of the default routes of both families; null when they cannot be read.
Json GatewaysOf(const TOLVA::NIC_INFO& info);

/// Whether no static gateway is kept, per family.
Json GatewayStateOf(const TOLVA::NIC_INFO& info);
std::span<const Field> GatewayStateFields();

} // namespace zelkctl
