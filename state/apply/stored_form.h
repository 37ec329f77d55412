#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <state/plan/plan.h>
#include <state/platform/registry.h>

namespace zelk
{

/// A value of the registry as it was, or that there was none.
struct StoredValue
{
    std::wstring key;
    std::wstring name;
    std::optional<RegistryValue> value;
};

/// The values by which the registry keeps the settings of adapters, to the letter: an empty value and none mean the
/// same, but are not.
class StoredForm
{
public:
    /// Reads the values of these adapters.
    explicit StoredForm(const std::vector<Target>& targets);
    /// Those that were read earlier.
    explicit StoredForm(std::vector<StoredValue> values) : m_values(std::move(values)) {}

    /// Whether it is a value that adapters with these targets have.
    static bool IsKnown(const StoredValue& value, const std::vector<Target>& targets);

    [[nodiscard]] const std::vector<StoredValue>& Values() const noexcept { return m_values; }

    /// Writes what is different now as it was. For when it means the same already. False when nothing was different.
    [[nodiscard]] bool Restore() const;

private:
    std::vector<StoredValue> m_values;
};

} // namespace zelk
