#include "Table.h"

#include <algorithm>
#include <iterator>
#include <ostream>

namespace tidemark::bench {

Table::Table(std::vector<Column> columns)
    : m_columns(std::move(columns))
{
}

void Table::addRow(std::vector<std::string> cells)
{
    cells.resize(m_columns.size());
    m_rows.push_back(std::move(cells));
}

void Table::print(std::ostream& output) const
{
    std::vector<std::string> titles;
    std::ranges::transform(m_columns, std::back_inserter(titles), &Column::title);
    const std::string heading = line(titles);
    output << heading << '\n' << std::string(heading.size(), '-') << '\n';
    for (const std::vector<std::string>& row : m_rows)
        output << line(row) << '\n';
}

std::size_t Table::width(std::size_t column) const
{
    std::size_t widest = m_columns[column].title.size();
    for (const std::vector<std::string>& row : m_rows)
        widest = std::max(widest, row[column].size());
    return widest;
}

std::string Table::line(const std::vector<std::string>& cells) const
{
    constexpr std::string_view gap = "  ";
    std::string text;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::string padding(width(i) - cells[i].size(), ' ');
        if (i > 0)
            text += gap;
        text += m_columns[i].align == Align::left ? cells[i] + padding : padding + cells[i];
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

}  // namespace tidemark::bench
