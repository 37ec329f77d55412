#include "table.h"

#include <algorithm>
#include <utility>

#include "text.h"

namespace zelkctl
{

void Table::Add(std::vector<std::string> cells)
{
    m_rows.push_back(std::move(cells));
}

std::string Table::Text() const
{
    constexpr std::size_t GAP = 2;
    const auto widths = Widths();
    std::string text;
    for (const auto& row : m_rows)
    {
        std::size_t padding = 0; // written before the next cell, so that no line ends with blanks
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            text.append(padding, ' ').append(row[i]);
            padding = widths[i] - DisplayWidth(row[i]) + GAP;
        }
        text += '\n';
    }
    return text;
}

std::vector<std::size_t> Table::Widths() const
{
    std::vector<std::size_t> widths;
    for (const auto& row : m_rows)
    {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
    }
    return widths;
}

} // namespace zelkctl
