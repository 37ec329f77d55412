#include "answer/output.h"

#include <iostream>

#include "answer/table.h"
#include "system/text.h"

namespace zelkctl
{
namespace
{

/// Of the JSON that the tool writes; raised whenever something in it is renamed, removed or means something else.
constexpr int SCHEMA_VERSION = 1;

std::string Joined(const Json& values)
{
    std::string text;
    for (const Json& value : values)
        text.append(text.empty() ? "" : ", ").append(TextOf(value));
    return text;
}

std::string Dump(const Json& value, int indent)
{
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

/// The value for a script: a line for each item of an array, nothing for what is not known.
std::string BareLines(const Json& value)
{
    if (value.is_null())
        return "\n";
    if (value.is_string())
        return Printable(value.get_ref<const std::string&>()) + '\n';
    if (!value.is_array())
        return Dump(value, -1) + '\n';
    std::string lines;
    for (const Json& item : value)
        lines += BareLines(item);
    return lines;
}

/// A record need not have all fields of its verb.
const Json& ItemOf(const Json& record, const std::string& sKey)
{
    const auto item = record.find(sKey);
    if (item == record.end())
        throw Failure({.code = EXIT_USAGE, .sReason = "the answer has no " + sKey, .sHint = "--json shows all of it."});
    return *item;
}

const char* KindOf(ExitCode code)
{
    switch (code)
    {
    case EXIT_USAGE: return "usage";
    case EXIT_NO_SUCH_ADAPTER: return "adapter";
    case EXIT_NEEDS_ELEVATION: return "elevation";
    default: return "failed";
    }
}

Json ErrorOf(const Failure::Details& details)
{
    const auto OrNull = [](const std::string& text) { return text.empty() ? Json() : Json(text); };
    Json error;
    error["kind"] = KindOf(details.code);
    error["exitCode"] = static_cast<int>(details.code);
    error["operation"] = OrNull(details.sOperation);
    error["adapter"] = OrNull(details.sAdapter.empty() ? "" : details.sAdapter.substr(1, details.sAdapter.size() - 2));
    error["reason"] = details.sReason;
    error["hint"] = OrNull(details.sHint);
    return error;
}

} // namespace

void Output::List(std::span<const Field> fields, const Json& records, std::string_view none) const
{
    if (!m_sGet.empty())
    {
        for (const Json& record : records)
            Data(BareLines(ItemOf(record, m_sGet)));
        return;
    }
    if (m_bJson)
        return WriteJson("result", records);
    if (records.empty())
        return Note(none);

    Table table;
    std::vector<std::string> heading;
    for (const Field& field : fields)
        heading.emplace_back(field.pszLabel);
    table.Add(heading);
    for (const Json& record : records)
    {
        std::vector<std::string> row;
        for (const Field& field : fields)
            row.push_back(TextOf(record.at(field.pszKey)));
        table.Add(row);
    }
    Data(table.Text());
}

void Output::Record(std::span<const Field> fields, const Json& record) const
{
    if (!m_sGet.empty())
        return Data(BareLines(ItemOf(record, m_sGet)));
    Table table;
    for (const Field& field : fields)
        table.Add({field.pszLabel, TextOf(record.at(field.pszKey))});
    Answer(record, table.Text());
}

void Output::Answer(const Json& result, std::string_view text) const
{
    m_bJson ? WriteJson("result", result) : Data(text);
}

void Output::JsonLine(const Json& value)
{
    Data(Dump(value, -1) + '\n');
}

void Output::Fail(const Failure& failure)
{
    const Failure::Details& details = failure.What();
    m_exitCode = details.code;
    Note(Painted("zelkctl:", Colour::BAD, stderr) + ' ' + failure.what());
    if (!details.sHint.empty())
        Note(Painted("hint:", Colour::WATCH, stderr) + ' ' + details.sHint);
    if (m_bJson)
        WriteJson("error", ErrorOf(details));
}

void Output::Data(std::string_view text)
{
    if (!std::cout.write(text.data(), static_cast<std::streamsize>(text.size())).flush())
        throw Failure({.sReason = "the standard output cannot be written"});
}

void Output::Note(std::string_view text)
{
    std::cerr << text << '\n';
}

void Output::WriteJson(const char* pszKey, const Json& value) const
{
    Json answer;
    answer["schemaVersion"] = SCHEMA_VERSION;
    answer["command"] = m_sCommand;
    answer[pszKey] = value;
    Data(Dump(answer, 2) + '\n');
}

std::string TextOf(const Json& value)
{
    if (value.is_null() || value.empty())
        return "-";
    if (value.is_array())
        return Joined(value);
    if (value.is_boolean())
        return value.get<bool>() ? "yes" : "no";
    if (value.is_string())
        return value.get_ref<const std::string&>().empty() ? "-" : Printable(value.get_ref<const std::string&>());
    return value.dump();
}

} // namespace zelkctl
