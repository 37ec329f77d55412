#pragma once

#include <optional>
#include <string>
#include <vector>

#include <state/reading/stored_key.h>

namespace zelk
{

/// What the driver shows for its speed and duplex setting: of the subkey of the class key, which is at `path`. Nothing
/// for a driver without such a setting.
std::optional<std::string> ReadSpeedSetting(StoredKey& key, const std::wstring& path, std::vector<Problem>& problems);

} // namespace zelk
