#pragma once

#include <string>

#include "answer/answer.h"

namespace zelkctl
{

/// What an adapter has to be like, as "ipv4.addresses=192.0.2.20/24": the value is one of the lines that --get prints
/// for the field, without regard to case. Without a value the field has to be empty or unknown.
class Condition
{
public:
    /// Throws UsageError for a text of another form, a field that adapters do not have, and a word that is none of the
    /// field's.
    explicit Condition(const std::string& sText);

    /// Of an adapter's JSON.
    [[nodiscard]] bool Holds(const Json& adapter) const;
    [[nodiscard]] std::string Text() const { return m_field.sKey + '=' + m_sValue; }

private:
    Field m_field;
    std::string m_sValue;
};

} // namespace zelkctl
