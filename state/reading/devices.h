#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <state/machine/adapter.h>

namespace zelk
{

class Reading;

/// An installed device of the network class.
struct Device
{
    std::string instance; ///< device instance path
    std::string description;
    std::optional<bool> present; ///< in the machine now
    std::optional<DeviceProblem> problem;
};

/// All installed devices of the network class, those too that are not in the machine now.
struct Devices
{
    bool readable = false; ///< completely: a device that is not among them is not installed
    std::unordered_map<std::string, Device> byClassKey; ///< by the subkey of the class key, such as "0007"
    std::vector<Device> withoutDriver;                  ///< present ones that have no subkey
};

/// Asks the device installer. What cannot be read is in the machine's problems.
Devices ReadDevices(Reading& reading);

/// The instance paths, in lower case, of the devices that expose the LAN device interface; nothing when they cannot be
/// read.
std::optional<std::vector<std::string>> ReadLanDevices(Reading& reading);

} // namespace zelk
