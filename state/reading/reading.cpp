#include <state/reading/reading.h>

#include <utility>

#include <state/platform/system_message.h>

namespace zelk
{

Adapter& Reading::Add(Adapter adapter)
{
    const std::size_t place = machine.adapters.size();
    if (adapter.guid)
        m_byGuid.emplace(*adapter.guid, place);
    if (adapter.index)
        m_byIndex[static_cast<std::size_t>(Family::IPV4)].emplace(*adapter.index, place);
    if (const auto index = adapter.ipv6Index ? adapter.ipv6Index : adapter.index)
        m_byIndex[static_cast<std::size_t>(Family::IPV6)].emplace(*index, place);
    return machine.adapters.emplace_back(std::move(adapter));
}

Adapter* Reading::Find(const Guid& guid)
{
    const auto found = m_byGuid.find(guid);
    return found != m_byGuid.end() ? &machine.adapters[found->second] : nullptr;
}

Adapter* Reading::Find(Family family, std::uint32_t index)
{
    const auto& table = m_byIndex[static_cast<std::size_t>(family)];
    const auto found = table.find(index);
    return found != table.end() ? &machine.adapters[found->second] : nullptr;
}

void Reading::Report(std::uint32_t code, std::string step, std::string text)
{
    machine.problems.push_back(MakeProblem(code, std::move(step), std::move(text)));
}

Problem MakeProblem(std::uint32_t code, std::string step, std::string text)
{
    return {code, std::move(step), std::move(text), SystemMessage(code)};
}

} // namespace zelk
