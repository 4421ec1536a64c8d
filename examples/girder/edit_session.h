#pragma once

#include "document.h"
#include "number_text.h"

#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace Girder {

// Edits a document by commands read line by line; README.md describes them. Results and the spans
// that change go to `out`, faults with the number of their line to `errors`.
class EditSession {
public:
    // `file` is where the model came from and is saved to. `stations` and `format` are used where
    // the model is solved.
    EditSession(Document& document, const std::string& file, int stations,
                const NumberFormat& format, std::ostream& out, std::ostream& errors);
    ~EditSession();
    EditSession(const EditSession&) = delete;
    EditSession& operator=(const EditSession&) = delete;

    // Until "quit" or the end of the lines. False if a line could not be carried out.
    bool run(std::istream& lines);

private:
    using Words = std::vector<std::string>;
    struct Action;
    static const std::vector<Action>& actions();

    bool perform(const std::string& line);
    void showSpan(std::size_t span);

    void setLength(const Words& words);
    void setLoad(const Words& words);
    void addPointLoad(const Words& words);
    void removePointLoad(const Words& words);
    void select(const Words& words);
    void beginGroup(const Words& words);
    void endGroup(const Words& words);
    void undo(const Words& words);
    void redo(const Words& words);
    void show(const Words& words);
    void solve(const Words& words);
    void save(const Words& words);
    void help(const Words& words);

    // These throw a Fault if the word does not fit.
    std::vector<std::size_t> spansOf(const std::string& word) const;
    std::size_t spanOf(const std::string& word) const;
    static double numberOf(const std::string& word);
    static std::size_t itemOf(const std::string& word, std::size_t count, const std::string& what);
    // Carries an edit out on one span, or on several as one group.
    template <class Edit>
    void edit(const std::vector<std::size_t>& spans, const Words& words, Edit edit);
    void stepHistory(const Words& words, bool isUndo);

    Document& m_document;
    std::string m_file;
    int m_stations;
    NumberFormat m_format;
    std::ostream& m_out;
    std::ostream& m_errors;
    Tools::DataChangedFunction m_view;
};

}
