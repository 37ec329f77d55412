#pragma once

#include <span>
#include <string_view>

#include <nlohmann/json.hpp>

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

/// How the tool speaks: data on the standard output, as JSON or as aligned text, and everything else on the error
/// output. Commands build their answer once, as JSON; the text form shows the items that its fields name.
class Output
{
public:
    void SetJson(bool bJson) noexcept { m_bJson = bJson; }

    /// An array of records, as a table with a heading. Without a record the text form is empty, and `none` says so on
    /// the error output.
    void List(std::span<const Field> fields, const Json& records, std::string_view none) const;
    /// One record, an item a line.
    void Record(std::span<const Field> fields, const Json& record) const;

    /// Writes to the standard output and throws std::runtime_error when that does not take it.
    static void Data(std::string_view text);
    /// Writes a line to the error output.
    static void Note(std::string_view text);
    /// Likewise under the tool's name, as a shell's user expects it.
    static void Failure(std::string_view text);

private:
    bool m_bJson = false;
};

} // namespace zelkctl
