#include "events/condition.h"

#include <algorithm>
#include <optional>
#include <sstream>
#include <vector>

#include <state/platform/utf8.h>
#include <state/values/hardware_address.h>
#include <state/values/ip_prefix.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "answer/value_text.h"
#include "parser/suggestion.h"
#include "records/shown_fields.h"

namespace zelkctl
{
namespace
{

constexpr const char* OPTION = "--until";

/// Addresses have several texts.
std::string AsPrinted(const std::string& sValue)
{
    if (const auto prefix = zelk::IpPrefix::Parse(sValue))
        return prefix->ToText();
    if (const auto address = zelk::IpAddress::Parse(sValue))
        return address->ToText();
    if (const auto address = zelk::HardwareAddress::Parse(sValue);
        address && sValue.find_first_of("-:") != std::string::npos)
        return address->ToText();
    return sValue;
}

Field FindField(const std::string& sKey)
{
    const auto fields = ShownFields<zelk::Adapter>();
    std::vector<std::string> keys;
    std::ranges::transform(fields, std::back_inserter(keys), &Field::sKey);
    if (const std::string sObjection = ObjectionTo(sKey, "field", keys); !sObjection.empty())
        throw UsageError(OPTION, sObjection);
    return *std::ranges::find(fields, sKey, &Field::sKey);
}

} // namespace

Condition::Condition(const std::string& sText)
{
    const std::size_t equals = sText.find('=');
    if (equals == std::string::npos)
        throw UsageError(OPTION, Quoted(sText) + " is not of the form FIELD=VALUE");
    m_field = FindField(sText.substr(0, equals));
    m_sValue = AsPrinted(sText.substr(equals + 1));
    if (m_field.labelOfWord != nullptr && !m_sValue.empty() && m_field.labelOfWord(m_sValue) == nullptr)
        throw UsageError(OPTION, Quoted(m_sValue) + " is not a value that " + Quoted(m_field.sKey) + " can have");
}

bool Condition::Holds(const Json& adapter) const
{
    const Json value = ValueOf(m_field, adapter);
    if (m_sValue.empty())
        return IsNothing(value);
    std::istringstream lines(BareLines(value));
    for (std::string sLine; std::getline(lines, sLine);)
        if (zelk::EqualIgnoringCase(sLine, m_sValue))
            return true;
    return false;
}

} // namespace zelkctl
