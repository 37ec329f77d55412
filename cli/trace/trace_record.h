#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <state/fields/field.h>

#include "system/console.h"
#include "trace/trace_line.h"

namespace zelkctl
{

/// One of the library's trace levels.
struct TraceLevel
{
    unsigned int uiLevel; ///< as trace.ini has it
    char tag;             ///< as a trace line has it
    const char* pszName;
    Colour colour;
};
inline constexpr TraceLevel TRACE_LEVELS[] = {{0, '\0', "Nothing", Colour::PLAIN},
                                              {1, 'E', "Error", Colour::BAD},
                                              {2, 'W', "Warning", Colour::WATCH},
                                              {3, 'I', "Information", Colour::PLAIN},
                                              {4, 'V', "Verbose", Colour::QUIET}};

/// A trace line with the rows on which its message goes on, such as those of a byte dump.
struct TraceRecord
{
    TraceLine line;
    std::vector<std::string> rows;

    [[nodiscard]] const TraceLevel& Level() const;
    /// Message and rows in one.
    [[nodiscard]] std::string WholeMessage() const;
};

class TraceParser
{
public:
    /// Rows before the first line go on with the last line of the text before.
    std::vector<TraceRecord> Parse(std::string_view text);

private:
    std::optional<TraceLine> m_last;
};

} // namespace zelkctl

namespace zelk
{

template <>
FieldTable<zelkctl::TraceRecord> FieldsOf();

} // namespace zelk
