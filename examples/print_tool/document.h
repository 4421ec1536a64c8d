#pragma once

#include <memory>
#include <string>
#include <vector>

namespace PrintTool {

// A PDF of listing pages: A4 upright, a fixed-pitch font, a footer with the page's number. All
// operations throw std::runtime_error where the PDF library fails.
class Document {
public:
    Document();
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    // A line in bytes of code page 1252. One that is too long goes on in the next line; a full page
    // begins the next.
    void addLine(const std::string& line);
    // Lines that stay together, on a page of their own if need be. Those that are more than a page
    // holds run over its end.
    void addBlock(const std::vector<std::string>& lines);
    void addHeading(const std::string& text);
    void startPage();

    // Puts the footers on and writes the file.
    void save(const std::string& file);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}
