#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <state/machine/machine.h>
#include <state/platform/system_version.h>

namespace zelk
{

/// A machine that is being read: its sources add to it one after the other, and find what another one added by its GUID
/// or its interface index.
class Reading
{
public:
    explicit Reading(SystemVersion version) : m_version(std::move(version)) {}

    [[nodiscard]] const SystemVersion& Version() const noexcept { return m_version; }
    [[nodiscard]] bool IsVistaOrLater() const noexcept { return m_version.IsVistaOrLater(); }

    Machine machine;

    /// Valid until the next one is added.
    Adapter& Add(Adapter adapter);
    /// Null where there is none.
    Adapter* Find(const Guid& guid);
    Adapter* Find(Family family, std::uint32_t index);

    /// Notes what could not be read of the machine.
    void Report(std::uint32_t code, std::string step, std::string text);

private:
    SystemVersion m_version;
    std::unordered_map<Guid, std::size_t> m_byGuid;
    std::unordered_map<std::uint32_t, std::size_t> m_byIndex[2]; ///< a table for each family
};

/// A problem with the system's text for its code.
Problem MakeProblem(std::uint32_t code, std::string step, std::string text);

} // namespace zelk
