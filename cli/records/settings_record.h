#pragma once

#include <span>

#include <zelk_nm/tolva.h>

#include "answer/output.h"

namespace zelkctl
{

/// The settings of an adapter beside its addresses. What cannot be read is null.
Json SettingsOf(const TOLVA::NIC_INFO& info);
std::span<const Field> SettingsFields();

} // namespace zelkctl
