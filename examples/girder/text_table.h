#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace Girder {

// A table of texts for a listing: columns as wide as their longest text, all but the first flush
// right.
class TextTable {
public:
    explicit TextTable(const std::vector<std::string>& titles) : m_rows{titles} {}

    // As many cells as there are titles.
    void add(const std::vector<std::string>& cells) { m_rows.push_back(cells); }
    void print(std::ostream& out) const;

private:
    std::vector<std::vector<std::string>> m_rows;
};

}
