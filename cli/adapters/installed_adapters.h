#pragma once

#include <vector>

#include "adapters/adapter.h"

namespace zelkctl
{

/// Where the registry keeps a key for each connection, named by its adapter's GUID.
inline constexpr const wchar_t* CONNECTIONS =
    L"SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}";

/// Every adapter that the registry has a connection of, whatever its state: with GUID, name and device instance alone.
/// The library lists enabled ones only, so that one that was disabled could never be found again.
std::vector<Adapter> ListInstalledAdapters();

/// Whether the adapter's device is neither disabled nor stopped; nothing when the system does not tell.
std::optional<bool> IsDeviceStarted(const Adapter& adapter);

} // namespace zelkctl
