#include "answer/table.h"

#include <algorithm>
#include <utility>

#include "system/text.h"

namespace zelkctl
{

void Table::Add(std::vector<std::string> cells, Colour colour)
{
    m_widths.resize(std::max(m_widths.size(), cells.size()));
    for (std::size_t i = 0; i < cells.size(); ++i)
        m_widths[i] = std::max(m_widths[i], DisplayWidth(cells[i]));
    m_rows.push_back({std::move(cells), colour});
}

std::string Table::Text() const
{
    constexpr std::size_t GAP = 2;
    std::string text;
    for (const auto& [cells, colour] : m_rows)
    {
        std::string line;
        std::size_t padding = 0; // written before the next cell, so that no line ends with blanks
        for (std::size_t i = 0; i < cells.size(); ++i)
        {
            line.append(padding, ' ').append(cells[i]);
            padding = m_widths[i] - DisplayWidth(cells[i]) + GAP;
        }
        text += Painted(line, colour, stdout) + '\n';
    }
    return text;
}

std::string Table::TakeText()
{
    std::string text = Text();
    m_rows.clear();
    return text;
}

} // namespace zelkctl
