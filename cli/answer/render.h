#pragma once

#include <string>

#include "answer/answer.h"
#include "answer/failure.h"
#include "answer/form.h"

namespace zelkctl
{

/// Of the JSON that the tool writes; raised whenever something in it is renamed, removed or means something else.
inline constexpr int SCHEMA_VERSION = 2;

/// One record as a table, an item a line.
std::string RecordTable(const std::vector<Field>& fields, const Json& record, bool bOmitAbsent);

/// Writes the answers of one command, data on the standard output and everything else on the error output.
///
/// In JSON an answer is one object: "schemaVersion", "command", and either "result" or "error".
class Renderer
{
public:
    /// `sCommand` is the words that chose what is done, such as "adapter list".
    Renderer(Form form, std::string sCommand);

    /// Writes the answer with all that follows it.
    void Render(const Answer& answer) const;
    void Render(const Failure& failure) const;

private:
    void RenderPiece(const Answer& piece, bool bMoreComes) const;
    void WriteJson(const char* pszKey, const Json& value) const;
    [[nodiscard]] std::string TableOf(const Answer& answer) const;

    Form m_form;
    std::string m_sCommand;
};

} // namespace zelkctl
