#pragma once

#include <span>

#include <zelk_nm/tolva.h>

#include "answer/output.h"

namespace zelkctl
{

Json RecordOf(const TOLVA::ROUTE_INFO& route);
std::span<const Field> RouteFields();

} // namespace zelkctl
