#include "output.h"

#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "table.h"
#include "text.h"

namespace zelkctl
{
namespace
{

std::string TextOf(const Json& value);

std::string Joined(const Json& values)
{
    std::string text;
    for (const Json& value : values)
        text.append(text.empty() ? "" : ", ").append(TextOf(value));
    return text;
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
        return Printable(value.get_ref<const std::string&>());
    return value.dump();
}

void WriteJson(const Json& value)
{
    Output::Data(value.dump(2, ' ', false, Json::error_handler_t::replace) + '\n');
}

} // namespace

void Output::List(std::span<const Field> fields, const Json& records, std::string_view none) const
{
    if (m_bJson)
        return WriteJson(records);
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
    if (m_bJson)
        return WriteJson(record);
    Table table;
    for (const Field& field : fields)
        table.Add({field.pszLabel, TextOf(record.at(field.pszKey))});
    Data(table.Text());
}

void Output::Data(std::string_view text)
{
    if (!std::cout.write(text.data(), static_cast<std::streamsize>(text.size())).flush())
        throw std::runtime_error("the standard output cannot be written");
}

void Output::Note(std::string_view text)
{
    std::cerr << text << '\n';
}

void Output::Failure(std::string_view text)
{
    Note("zelkctl: " + std::string(text));
}

} // namespace zelkctl
