#pragma once

#include <span>

#include <zelk_nm/tolva.h>

#include "output.h"

namespace zelkctl
{

Json RecordOf(const TOLVA::ASSOC_IP_ADDR& address);
std::span<const Field> AddressFields();

} // namespace zelkctl
