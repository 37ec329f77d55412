#pragma once

#include <string>

#include <state/notifications/adapter_event.h>

namespace zelkctl
{

/// What people read of an event, as one line: of a list what was added to it, removed from it, or changed in it.
std::string TextOf(const zelk::AdapterEvent& event);

} // namespace zelkctl
