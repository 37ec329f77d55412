#include <state/plan/step.h>

namespace zelk
{
namespace
{

std::string MeansText(const Command& command)
{
    return command.program == Program::NETSH ? "netsh.exe" : "route.exe";
}

std::string MeansText(const LibraryCall& call)
{
    switch (call.operation)
    {
    case LibraryOperation::ENABLE_ADAPTER: return "TOLVA::EnableAdapter";
    case LibraryOperation::DISABLE_ADAPTER: return "TOLVA::DisableAdapter";
    case LibraryOperation::SET_HARDWARE_ADDRESS: return "TOLVA::SetHardwareAddress";
    case LibraryOperation::SET_COMPUTER_NAME: return "TOLVA::SetComputerNameW";
    case LibraryOperation::SET_PRIMARY_DNS_SUFFIX: return "TOLVA::SetPrimaryDnsSuffix";
    case LibraryOperation::SET_WORKGROUP_NAME: break;
    }
    return "TOLVA::SetWorkgroupName";
}

std::string MeansText(const StoredRoute&)
{
    return "registry";
}

std::string MeansText(const StoredSetting&)
{
    return "registry";
}

std::string MeansText(const Ipv6Binding&)
{
    return "INetCfg";
}

} // namespace

std::string MeansOf(const Action& action)
{
    return std::visit([](const auto& means) { return MeansText(means); }, action);
}

std::string CommandText(const Action& action)
{
    const auto* const command = std::get_if<Command>(&action);
    if (command == nullptr)
        return {};
    std::string text = MeansText(*command);
    for (const std::string& argument : command->arguments)
        text += argument.find(' ') == std::string::npos ? ' ' + argument : " \"" + argument + '"';
    return text;
}

Json ToJson(const Step& step)
{
    const std::string command = CommandText(step.action);
    Json undo = Json::array();
    for (const std::string& path : step.touches)
        undo.push_back(path);
    return {{"adapter", step.adapter.empty() ? Json() : Json(step.adapter)},
            {"step", step.text},
            {"means", MeansOf(step.action)},
            {"command", command.empty() ? Json() : Json(command)},
            {"undoRestores", std::move(undo)}};
}

Json ToJson(const Difference& difference)
{
    return {{"adapter", difference.adapter.empty() ? Json() : Json(difference.adapter)},
            {"path", difference.path},
            {"before", difference.before},
            {"after", difference.after}};
}

} // namespace zelk
