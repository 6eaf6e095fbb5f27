#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tidemark::bench {

/// Text in aligned columns.
class Table {
public:
    enum class Align { left, right };
    struct Column {
        std::string title;
        Align align = Align::left;
    };

    explicit Table(std::vector<Column> columns);

    /// As many cells as there are columns, in ASCII.
    void addRow(std::vector<std::string> cells);

    bool isEmpty() const { return m_rows.empty(); }
    void print(std::ostream& output) const;

private:
    std::size_t width(std::size_t column) const;
    std::string line(const std::vector<std::string>& cells) const;

    std::vector<Column> m_columns;
    std::vector<std::vector<std::string>> m_rows;
};

}  // namespace tidemark::bench
