#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <state/machine/machine.h>
#include <state/plan/plan.h>

namespace zelk
{

/// Collects the steps of one adapter, with the words in which the system's commands are told about it.
class StepList
{
public:
    StepList(const Adapter& adapter, const Environment& system, std::vector<Step>& steps)
        : m_adapter(adapter), m_index(adapter.index), m_system(system), m_steps(steps)
    {
    }

    [[nodiscard]] bool IsBeforeVista() const noexcept { return m_system.backEnd == BackEnd::PRE_VISTA; }
    [[nodiscard]] bool IsBeforeWindows7() const noexcept
    {
        return m_system.majorVersion < 6 || (m_system.majorVersion == 6 && m_system.minorVersion == 0);
    }
    /// What netsh calls the connection.
    [[nodiscard]] std::string ConnectionName() const { return m_adapter.connectionName.value_or(NameOf(m_adapter)); }
    /// Nothing once a step restarts the adapter: some systems then give it another index.
    [[nodiscard]] const std::optional<std::uint32_t>& Index() const noexcept { return m_index; }
    void ForgetIndex() noexcept { m_index.reset(); }

    /// "netsh interface ipv4 ..." or "ipv6"; before Vista the context of IPv4 is called "ip".
    void Netsh(Family family, std::string text, std::vector<std::string> arguments, std::vector<std::string> touches)
    {
        const char* const context = family == Family::IPV6 ? "ipv6" : IsBeforeVista() ? "ip" : "ipv4";
        arguments.insert(arguments.begin(), {"interface", context});
        Add(std::move(text), Command{Program::NETSH, std::move(arguments)}, std::move(touches));
    }

    void Add(std::string text, Action action, std::vector<std::string> touches)
    {
        m_steps.push_back({NameOf(m_adapter), m_adapter.guid, std::move(text), std::move(action), std::move(touches)});
    }

private:
    const Adapter& m_adapter;
    std::optional<std::uint32_t> m_index;
    const Environment& m_system;
    std::vector<Step>& m_steps;
};

} // namespace zelk
