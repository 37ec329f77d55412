#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zelkctl
{

/// Rows of UTF-8 cells, written with every column as wide as its widest cell.
class Table
{
public:
    void Add(std::vector<std::string> cells);
    [[nodiscard]] std::string Text() const;

private:
    [[nodiscard]] std::vector<std::size_t> Widths() const;

    std::vector<std::vector<std::string>> m_rows;
};

} // namespace zelkctl
