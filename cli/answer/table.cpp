#include "answer/table.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "answer/cell_text.h"

namespace zelkctl
{
namespace
{

constexpr std::size_t GAP = 2;
constexpr std::size_t NARROWEST = 18; ///< to which a column is made: an IPv4 address with its prefix length fits

std::size_t WidthOf(const Table::Cell& cell)
{
    std::size_t width = 0;
    for (const std::string& sLine : cell)
        width = std::max(width, DisplayWidth(sLine));
    return width;
}

/// Takes from the widest column until all fit into so many columns of the terminal, or no column can give any more.
std::vector<std::size_t> Narrowed(std::vector<std::size_t> widths, std::size_t columns)
{
    const std::size_t gaps = widths.empty() ? 0 : (widths.size() - 1) * GAP;
    for (;;)
    {
        const std::size_t total = std::accumulate(widths.begin(), widths.end(), gaps);
        const auto widest = std::ranges::max_element(widths);
        if (total <= columns || *widest <= NARROWEST)
            return widths;
        *widest = std::max(NARROWEST, *widest - std::min(*widest, total - columns));
    }
}

/// One row, written line by line.
class RowWriter
{
public:
    explicit RowWriter(const std::vector<std::size_t>& widths) : m_widths(widths) {}

    std::string Lines(const std::vector<Table::Cell>& cells)
    {
        std::size_t lines = 1;
        for (const Table::Cell& cell : cells)
            lines = std::max(lines, cell.size());
        for (std::size_t line = 0; line < lines; ++line)
            WriteLine(cells, line);
        return std::move(m_sText);
    }

private:
    void WriteLine(const std::vector<Table::Cell>& cells, std::size_t line)
    {
        std::size_t start = 0; // of the column
        for (std::size_t i = 0; i < cells.size(); start += m_widths[i++] + GAP)
            if (line < cells[i].size() && !cells[i][line].empty())
                WriteCell(cells[i][line], start);
        EndLine();
    }
    void WriteCell(const std::string& sText, std::size_t start)
    {
        if (m_position > 0 && m_position + GAP > start)
            EndLine();
        m_sLine.append(start - m_position, ' ').append(sText); // only before a cell: no line ends with blanks
        m_position = start + DisplayWidth(sText);
    }
    void EndLine()
    {
        m_sText += m_sLine + '\n';
        m_sLine.clear();
        m_position = 0;
    }

    const std::vector<std::size_t>& m_widths;
    std::string m_sText;
    std::string m_sLine;
    std::size_t m_position = 0;
};

} // namespace

void Table::Add(std::vector<Cell> cells, Colour colour)
{
    m_widths.resize(std::max(m_widths.size(), cells.size()));
    for (std::size_t i = 0; i < cells.size(); ++i)
        m_widths[i] = std::max(m_widths[i], WidthOf(cells[i]));
    m_rows.push_back({std::move(cells), colour});
}

std::string Table::Text() const
{
    return TextWith(m_widths);
}

std::string Table::Text(std::size_t columns) const
{
    return TextWith(Narrowed(m_widths, columns));
}

std::string Table::TakeText()
{
    std::string text = Text();
    m_rows.clear();
    return text;
}

std::string Table::TextWith(const std::vector<std::size_t>& widths) const
{
    std::string text;
    for (const auto& [cells, colour] : m_rows)
    {
        const std::string sLines = RowWriter(widths).Lines(cells);
        text += Painted(std::string_view(sLines).substr(0, sLines.size() - 1), colour, stdout) + '\n';
    }
    return text;
}

} // namespace zelkctl
