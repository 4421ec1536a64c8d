#pragma once

#include <string>
#include <vector>

namespace Girder {

// What is to be said about a model file, each remark one line that names the file and the entry.
class Remarks {
public:
    explicit Remarks(const std::string& file) : m_file(file) {}

    // `entry` is a path such as "spans[2].length", items counted from 1; empty: the whole file.
    void error(const std::string& entry, const std::string& text);

    bool hasError() const { return !m_lines.empty(); }
    const std::vector<std::string>& lines() const { return m_lines; }

private:
    std::string m_file;
    std::vector<std::string> m_lines;
};

}
