#pragma once

#include <span>

#include <zelk_nm/tolva.h>

#include "answer/output.h"

namespace zelkctl
{

Json RecordOf(const MIB_TCP6ROW& connection);
std::span<const Field> Tcp6Fields();

} // namespace zelkctl
