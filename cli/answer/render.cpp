#include "answer/render.h"

#include <algorithm>
#include <utility>

#include <state/answers/error_report.h>

#include "answer/cell_text.h"
#include "answer/streams.h"
#include "answer/table.h"
#include "answer/value_text.h"
#include "system/console.h"

namespace zelkctl
{
namespace
{

std::string BareValues(const Field& field, const Json& value)
{
    if (!value.is_array())
        return BareLines(ValueOf(field, value));
    std::string lines;
    for (const Json& record : value)
        lines += BareLines(ValueOf(field, record));
    return lines;
}

std::string Joined(const std::vector<std::string>& texts)
{
    std::string text;
    for (const std::string& sText : texts)
        text.append(text.empty() ? "" : ", ").append(sText);
    return text;
}

std::string ListTable(const std::vector<Field>& fields, const Json& records, bool bWide)
{
    Table table;
    std::vector<Table::Cell> heading;
    for (const Field& field : fields)
        heading.push_back({field.sLabel});
    table.Add(std::move(heading));
    for (const Json& record : records)
    {
        std::vector<Table::Cell> row;
        for (const Field& field : fields)
        {
            auto texts = TextsOf(field, ValueOf(field, record));
            row.push_back(bWide ? Table::Cell{Joined(texts)} : std::move(texts));
        }
        table.Add(std::move(row));
    }
    return bWide ? table.Text() : table.Text(OutputColumns());
}

const Field& FindField(const std::vector<Field>& fields, const std::string& sKey)
{
    const auto found = std::ranges::find(fields, sKey, &Field::sKey);
    if (found == fields.end())
        throw Failure({.code = EXIT_USAGE,
                       .sReason = "this answer has no field " + Quoted(sKey),
                       .sHint = "Use --json to see the whole answer."});
    return *found;
}

std::vector<Field> Selected(const std::vector<Field>& fields, const std::vector<std::string>& keys)
{
    std::vector<Field> selected;
    for (const std::string& sKey : keys)
        selected.push_back(FindField(fields, sKey));
    return selected;
}

} // namespace

std::string RecordTable(const std::vector<Field>& fields, const Json& record, bool bOmitAbsent)
{
    Table table;
    for (const Field& field : fields)
    {
        if (field.bOnlyByKey)
            continue;
        const Json value = ValueOf(field, record);
        if (!bOmitAbsent || !IsNothing(value))
            table.Add({{field.sLabel}, TextsOf(field, value)});
    }
    return table.Text();
}

Renderer::Renderer(Form form, std::string sCommand) : m_form(std::move(form)), m_sCommand(std::move(sCommand)) {}

void Renderer::Render(const Answer& answer) const
{
    RenderPiece(answer, answer.next != nullptr);
    if (answer.next)
        while (const auto piece = answer.next())
            RenderPiece(*piece, true);
}

void Renderer::Render(const Failure& failure) const
{
    const Failure::Details& details = failure.What();
    WriteNote(Painted("zelkctl:", Colour::BAD, stderr) + ' ' + failure.what());
    if (!details.sHint.empty())
        WriteNote(Painted("hint:", Colour::WATCH, stderr) + ' ' + details.sHint);
    if (m_form.bJson)
        WriteJson("error", zelk::ToJson(zelk::ErrorReport{details.code, details.sReason, details.sOperation,
                                                          details.sAdapter, details.sHint}));
}

void Renderer::RenderPiece(const Answer& piece, bool bMoreComes) const
{
    if (!m_form.sGet.empty())
        WriteData(BareValues(FindField(piece.fields, m_form.sGet), piece.value));
    else if (m_form.bJson && bMoreComes)
        for (const Json& record : piece.value)
            WriteData(Dump(record, -1, m_form.bAscii) + '\n');
    else if (m_form.bJson)
        WriteJson("result", piece.value);
    else if (piece.text)
        WriteData(*piece.text);
    else if (!piece.value.empty())
        WriteData(TableOf(piece));
    if (m_form.IsText() && piece.value.empty() && !piece.sWhenEmpty.empty())
        WriteNote(piece.sWhenEmpty);
    for (const std::string& sNote : piece.notes)
        WriteNote(sNote);
}

void Renderer::WriteJson(const char* pszKey, const Json& value) const
{
    Json answer;
    answer["schemaVersion"] = SCHEMA_VERSION;
    answer["command"] = m_sCommand;
    answer[pszKey] = value;
    WriteData(Dump(answer, m_form.bJsonLines ? -1 : 2, m_form.bAscii) + '\n');
}

std::string Renderer::TableOf(const Answer& answer) const
{
    const auto& usual = m_form.bWide ? answer.wideColumns : answer.columns;
    const auto& columns = m_form.columns.empty() ? usual : m_form.columns;
    const auto fields = columns.empty() ? answer.fields : Selected(answer.fields, columns);
    if (answer.value.is_array())
        return ListTable(fields, answer.value, m_form.bWide);
    return RecordTable(fields, answer.value, answer.bOmitAbsent);
}

} // namespace zelkctl
