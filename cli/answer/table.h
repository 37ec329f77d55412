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
    using Cell = std::vector<std::string>; ///< the lines that stand below each other in it

    /// The colour is that of the whole row, on the standard output.
    void Add(std::vector<Cell> cells, Colour colour = Colour::PLAIN);

    [[nodiscard]] std::string Text() const;

    /// In at most so many columns of the terminal as far as that is possible: what does not fit into a cell takes a
    /// line of its own, and the cells after it go on below.
    [[nodiscard]] std::string Text(std::size_t columns) const;

    /// The text so far. What is added from now on goes on below it, in columns at least as wide.
    std::string TakeText();

private:
    struct Row
    {
        std::vector<Cell> cells;
        Colour colour;
    };

    [[nodiscard]] std::string TextWith(const std::vector<std::size_t>& widths) const;

    std::vector<Row> m_rows;
    std::vector<std::size_t> m_widths;
};

} // namespace zelkctl
