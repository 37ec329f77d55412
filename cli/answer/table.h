#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "system/console.h"

namespace zelkctl
{

/// Rows of UTF-8 cells, written with every column as wide as its widest cell.
class Table
{
public:
    /// The colour is that of the whole row, on the standard output.
    void Add(std::vector<std::string> cells, Colour colour = Colour::PLAIN);
    [[nodiscard]] std::string Text() const;
    /// The text so far. What is added from now on goes on below it, in columns at least as wide.
    std::string TakeText();

private:
    struct Row
    {
        std::vector<std::string> cells;
        Colour colour;
    };
    std::vector<Row> m_rows;
    std::vector<std::size_t> m_widths;
};

} // namespace zelkctl
