#include "table.h"

#include <algorithm>
#include <utility>

#include "text.h"

namespace zelkctl
{

void Table::Add(std::vector<std::string> cells, Colour colour)
{
    m_rows.push_back({std::move(cells), colour});
}

std::string Table::Text() const
{
    constexpr std::size_t GAP = 2;
    const auto widths = Widths();
    std::string text;
    for (const auto& [cells, colour] : m_rows)
    {
        std::string line;
        std::size_t padding = 0; // written before the next cell, so that no line ends with blanks
        for (std::size_t i = 0; i < cells.size(); ++i)
        {
            line.append(padding, ' ').append(cells[i]);
            padding = widths[i] - DisplayWidth(cells[i]) + GAP;
        }
        text += Painted(line, colour, stdout) + '\n';
    }
    return text;
}

std::vector<std::size_t> Table::Widths() const
{
    std::vector<std::size_t> widths;
    for (const auto& [cells, colour] : m_rows)
    {
        widths.resize(std::max(widths.size(), cells.size()));
        for (std::size_t i = 0; i < cells.size(); ++i)
            widths[i] = std::max(widths[i], DisplayWidth(cells[i]));
    }
    return widths;
}

} // namespace zelkctl
