#include <state/reading/device_problems.h>

namespace zelk
{
namespace
{

struct Text
{
    std::uint32_t code;
    const char* text;
};

constexpr Text TEXTS[] = {
    {1, "The device is not configured correctly."},
    {3, "The driver might be corrupted, or the system is low on memory or other resources."},
    {9, "The hardware reports an invalid identification number."},
    {10, "The device cannot start."},
    {12, "The device cannot find enough free resources to use."},
    {14, "The device cannot work properly until the machine is restarted."},
    {16, "The system cannot identify all the resources that the device uses."},
    {18, "The drivers of the device must be installed again."},
    {19, "The configuration of the device in the registry is incomplete or damaged."},
    {21, "The system is removing the device."},
    {22, "The device is disabled."},
    {24, "The device is not present, does not work properly, or does not have all its drivers installed."},
    {28, "The drivers of the device are not installed."},
    {29, "The device is disabled because its firmware did not give it the resources that it needs."},
    {31, "The device does not work properly because the system cannot load the drivers that it needs."},
    {32, "A driver (service) of the device has been disabled."},
    {33, "The system cannot determine which resources the device needs."},
    {34, "The system cannot determine the settings of the device."},
    {35, "The firmware of the machine does not include enough information to configure the device."},
    {36, "The device requests a different type of interrupt than it is configured for."},
    {37, "The driver failed to initialise the device."},
    {38, "An earlier instance of the driver is still in memory."},
    {39, "The driver is corrupted or missing."},
    {40, "The service key of the driver in the registry is missing or wrong."},
    {41, "The driver was loaded, but the device cannot be found."},
    {42, "A duplicate device is already running."},
    {43, "The device was stopped because it reported problems."},
    {44, "An application or a service has shut the device down."},
    {45, "The device is not connected to the machine."},
    {46, "The device cannot be accessed because the system is shutting down."},
    {47, "The device was prepared for safe removal and is still connected."},
    {48, "The driver was blocked because it has known problems with this system."},
    {49, "The registry of the system is too large to start new devices."},
    {50, "The system cannot apply all the properties of the device."},
    {51, "The device waits for another device to start."},
    {52, "The signature of the drivers cannot be verified."},
    {53, "The device is reserved for the kernel debugger."},
    {54, "The device has failed and is being reset."},
};

} // namespace

std::string DeviceProblemText(std::uint32_t code)
{
    for (const Text& known : TEXTS)
        if (known.code == code)
            return known.text;
    return "The device does not work, for an unlisted reason.";
}

} // namespace zelk
