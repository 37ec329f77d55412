#include "answer/value_text.h"

#include <cstdio>
#include <string_view>

#include "answer/cell_text.h"

namespace zelkctl
{
namespace
{

/// Of an array all items one after the other, of an array of arrays those of all.
void Append(Json& array, const Json& value)
{
    if (!value.is_array())
        array.push_back(value);
    else
        array.insert(array.end(), value.begin(), value.end());
}

Json ValueAt(const Json& record, std::string_view key)
{
    if (key.empty())
        return record;
    if (record.is_array())
    {
        Json values = Json::array();
        for (const Json& item : record)
            Append(values, ValueAt(item, key));
        return values;
    }
    const std::size_t dot = key.find('.');
    const auto member = record.is_object() ? record.find(std::string(key.substr(0, dot))) : record.end();
    if (member == record.end())
        return {};
    return ValueAt(*member, dot == std::string_view::npos ? std::string_view() : key.substr(dot + 1));
}

std::string WithoutStop(std::string text)
{
    if (text.ends_with('.'))
        text.pop_back();
    return text;
}

/// How people read a record that is an item of another one.
std::string ShortText(const Json& record)
{
    const auto Member = [&](const char* pszKey) { return record.contains(pszKey) ? TextOf(record[pszKey]) : "-"; };
    if (record.contains("prefixLength") && !record["prefixLength"].is_null())
        return Member("address") + '/' + Member("prefixLength");
    if (record.contains("destination"))
        return Member("destination") + " via " + Member("nextHop");
    if (record.contains("address"))
        return Member("address");
    if (record.contains("step"))
        return WithoutStop(Member("text")) + ": " + Member("step") + ": " + WithoutStop(Member("systemMessage")) +
               " (" + Member("code") + ')';
    return Printable(Dump(record, -1));
}

std::string Joined(const Json& values)
{
    std::string text;
    for (const Json& value : values)
        text.append(text.empty() ? "" : ", ").append(TextOf(value));
    return text;
}

/// A number of a unit that people read by thousands, such as "2.5 Gbit/s".
std::string ScaledText(double dValue, const std::string& sUnit)
{
    constexpr double STEP = 1000;
    std::string_view prefixes = " kMGT";
    while (dValue >= STEP && prefixes.size() > 1)
    {
        dValue /= STEP;
        prefixes.remove_prefix(1);
    }
    char text[40];
    std::snprintf(text, sizeof(text), "%.3g ", dValue);
    return text + (prefixes[0] != ' ' ? std::string(1, prefixes[0]) : std::string()) + sUnit;
}

std::string TextWithUnit(const Field& field, const Json& value)
{
    if (field.labelOfWord != nullptr && value.is_string())
        if (const char* pszLabel = field.labelOfWord(value.get_ref<const std::string&>()))
            return pszLabel;
    if (!value.is_number() || field.sUnit.empty())
        return TextOf(value);
    return field.sUnit == "bit/s" ? ScaledText(value.get<double>(), field.sUnit) : TextOf(value) + ' ' + field.sUnit;
}

} // namespace

Json ValueOf(const Field& field, const Json& record)
{
    if (field.sources.empty())
        return ValueAt(record, field.sKey);
    Json values = Json::array();
    for (const std::string& sKey : field.sources)
        if (const Json value = ValueAt(record, sKey); !value.is_null())
            Append(values, value);
    return values;
}

bool IsNothing(const Json& value)
{
    return value.empty() || (value.is_string() && value.get_ref<const std::string&>().empty());
}

std::string TextOf(const Json& value)
{
    if (IsNothing(value))
        return "-";
    if (value.is_array())
        return Joined(value);
    if (value.is_object())
        return ShortText(value);
    if (value.is_boolean())
        return value.get<bool>() ? "yes" : "no";
    if (value.is_string())
        return Printable(value.get_ref<const std::string&>());
    return value.dump();
}

std::vector<std::string> TextsOf(const Field& field, const Json& value)
{
    if (!value.is_array() || value.empty())
        return {TextWithUnit(field, value)};
    std::vector<std::string> texts;
    for (const Json& item : value)
        texts.push_back(TextWithUnit(field, item));
    return texts;
}

std::string BareLines(const Json& value)
{
    if (value.is_null())
        return "\n";
    if (value.is_string())
        return Printable(value.get_ref<const std::string&>()) + '\n';
    if (value.is_object())
        return ShortText(value) + '\n';
    if (!value.is_array())
        return Dump(value, -1) + '\n';
    std::string lines;
    for (const Json& item : value)
        lines += BareLines(item);
    return lines;
}

std::string Dump(const Json& value, int indent, bool bAscii)
{
    return value.dump(indent, ' ', bAscii, Json::error_handler_t::replace);
}

} // namespace zelkctl
