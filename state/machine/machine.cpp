#include <state/machine/machine.h>

#include <utility>

namespace zelk
{

StateError::StateError(Problem problem) : std::runtime_error(problem.text), m_problem(std::move(problem)) {}

bool IsDhcpServer(const IpAddress& address) noexcept
{
    constexpr IpAddress::Ipv4Bytes BROADCAST = {255, 255, 255, 255};
    return !address.IsUnspecified() && address != IpAddress(BROADCAST);
}

std::string NameOf(const Adapter& adapter)
{
    for (const auto* const name : {&adapter.connectionName, &adapter.friendlyName, &adapter.description})
        if (*name && !(*name)->empty())
            return **name;
    return adapter.guid ? adapter.guid->ToText() : std::string();
}

std::optional<std::string> DeviceNameOf(const Adapter& adapter)
{
    if (!adapter.guid)
        return std::nullopt;
    return "\\DEVICE\\TCPIP_" + adapter.guid->ToText();
}

} // namespace zelk
