#pragma once

#include <string>
#include <vector>

namespace zelkctl
{

/// The form in which the user wants to have an answer; text for people without a choice.
struct Form
{
    bool bJson = false;
    bool bJsonLines = false;          ///< each object takes one line
    bool bAscii = false;              ///< JSON without characters beyond ASCII
    std::string sGet;                 ///< of every record this item alone, as a bare value
    std::vector<std::string> columns; ///< of the table
    bool bWide = false;               ///< a table with all columns, as wide as it becomes

    [[nodiscard]] bool IsText() const noexcept { return !bJson && sGet.empty(); }
};

} // namespace zelkctl
