#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "console.h"

namespace zelkctl
{

/// Rows of UTF-8 cells, written with every column as wide as its widest cell.
class Table
{
public:
    /// The colour is that of the whole row, on the standard output.
    void Add(std::vector<std::string> cells, Colour colour = Colour::PLAIN);
    [[nodiscard]] std::string Text() const;

private:
    [[nodiscard]] std::vector<std::size_t> Widths() const;

    struct Row
    {
        std::vector<std::string> cells;
        Colour colour;
    };
    std::vector<Row> m_rows;
};

} // namespace zelkctl
