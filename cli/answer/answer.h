#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <state/fields/json.h>

#include "answer/exit_code.h"

namespace zelkctl
{

using zelk::Json;

/// One item of a record that can be shown.
struct Field
{
    /// Its place in the record: the keys on the way, joined by ".".
    std::string sKey;
    /// What people read instead.
    std::string sLabel;
    std::string sUnit = {};
    /// What people read instead of a value that is a word; null where values are none.
    const char* (*labelOfWord)(std::string_view word) = nullptr;
    /// Of an item that collects what stands in several places of the record: their keys.
    std::vector<std::string> sources = {};
    /// No table shows it unless the user asks for it.
    bool bOnlyByKey = false;
};

/// What a command has to say. The same answer is rendered as a table, as JSON or as bare values.
// NOLINTNEXTLINE(bugprone-exception-escape): it takes moving JSON for something that may throw.
struct Answer
{
    /// A record, an array of records, or a result of a form of its own, which has a text.
    Json value;
    /// The items of the record, or of each record, that can be shown.
    std::vector<Field> fields = {};
    /// The keys of those that the table shows unless the user asks for others; all of them when empty.
    std::vector<std::string> columns = {};
    /// Those of a wide table.
    std::vector<std::string> wideColumns = {};
    /// Whether the table of a single record leaves out what is not known.
    bool bOmitAbsent = false;
    /// What people read instead of a table.
    std::optional<std::string> text = {};
    /// What people read on the error output when the array is empty.
    std::string sWhenEmpty = {};
    /// More for people, on the error output; each a line.
    std::vector<std::string> notes = {};
    ExitCode code = EXIT_DONE;
    /// Waits for the next piece of an answer without a foreseeable end, of which JSON shows each record by itself, one
    /// a line. Nothing when the user ends it.
    std::function<std::optional<Answer>()> next = {};
};

} // namespace zelkctl
