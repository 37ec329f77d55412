#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "system/console.h"
#include "system/exit_code.h"
#include "system/failure.h"

namespace zelkctl
{

/// The order of a record's items is the order in which they are shown.
using Json = nlohmann::ordered_json;

/// One item of a record: its key, and what people read instead.
struct Field
{
    const char* pszKey;
    const char* pszLabel;
};

/// How the tool speaks: data on the standard output, as JSON, as bare values or as aligned text, and everything else on
/// the error output. Commands build their answer once, as JSON; the text form shows the items that its fields name.
///
/// A JSON answer is one object: "schemaVersion", "command", and either "result" or "error".
class Output
{
public:
    void SetJson(bool bJson) noexcept { m_bJson = bJson; }
    /// Of every record this item alone, as a bare value.
    void SetGet(std::string sKey) { m_sGet = std::move(sKey); }
    /// The words of the command line that chose what is done, such as "adapter list".
    void SetCommand(std::string sCommand) { m_sCommand = std::move(sCommand); }
    void SetExitCode(ExitCode code) noexcept { m_exitCode = code; }

    [[nodiscard]] bool IsJson() const noexcept { return m_bJson; }
    /// Whether people are to read it, not programs.
    [[nodiscard]] bool IsText() const noexcept { return !m_bJson && m_sGet.empty(); }
    [[nodiscard]] ExitCode GetExitCode() const noexcept { return m_exitCode; }

    /// An array of records, as a table with a heading. Without a record the text form is empty, and `none` says so on
    /// the error output.
    void List(std::span<const Field> fields, const Json& records, std::string_view none) const;
    /// One record, an item a line.
    void Record(std::span<const Field> fields, const Json& record) const;
    /// A result of a form of its own, for people as `text`.
    void Answer(const Json& result, std::string_view text) const;
    /// One compact object a line, for what comes without end.
    static void JsonLine(const Json& value);
    /// Tells why the command ends, and makes its exit code the command's.
    void Fail(const Failure& failure);

    /// Writes to the standard output and throws Failure when that does not take it.
    static void Data(std::string_view text);
    /// Writes a line to the error output.
    static void Note(std::string_view text);

private:
    void WriteJson(const char* pszKey, const Json& value) const;

    bool m_bJson = false;
    std::string m_sGet;
    std::string m_sCommand;
    ExitCode m_exitCode = EXIT_DONE;
};

/// What people read instead of the value: "-" for null, "yes" and "no", the items of an array joined by ", ".
std::string TextOf(const Json& value);

} // namespace zelkctl
