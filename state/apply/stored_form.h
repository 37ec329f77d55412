#pragma once

#include <optional>
#include <string>
#include <vector>

#include <state/plan/plan.h>
#include <state/platform/registry.h>

namespace zelk
{

/// The values by which the registry keeps the settings of adapters, to the letter: an empty value and none mean the
/// same, but are not.
class StoredForm
{
public:
    explicit StoredForm(const std::vector<Target>& targets);

    /// Writes what is different now as it was. For when it means the same already.
    void Restore() const;

private:
    struct Value
    {
        std::wstring key;
        std::wstring name;
        std::optional<RegistryValue> value;
    };

    std::vector<Value> m_values;
};

} // namespace zelk
