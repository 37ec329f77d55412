#pragma once

#include <vector>

#include <zelk_nm/tolva.h>

namespace zelkctl
{

/// All IPv6 TCP connections, in the platform's order. Throws Failure with the platform's code.
std::vector<MIB_TCP6ROW> ReadTcp6Table();

} // namespace zelkctl
