#pragma once

#include <span>
#include <vector>

#include <zelk_nm/tolva.h>

#include "output.h"

namespace zelkctl
{

/// An array of their texts.
Json DnsServerTexts(const std::vector<velmor::ip_address>& servers);

/// Whether no static servers are kept, per family.
Json DnsStateOf(const TOLVA::NIC_INFO& info);
std::span<const Field> DnsStateFields();

} // namespace zelkctl
