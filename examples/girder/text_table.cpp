#include "text_table.h"

#include <algorithm>

namespace Girder {

void TextTable::print(std::ostream& out) const
{
    std::vector<std::size_t> widths(m_rows.front().size());
    for (const auto& row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    for (const auto& row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - row[i].size(), ' ');
            out << (i == 0 ? "  " + row[i] + padding : "  " + padding + row[i]);
        }
        out << '\n';
    }
}

}
