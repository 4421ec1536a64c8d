#include "edit_session.h"

#include "listing.h"
#include "model_writer.h"
#include "remark_text.h"

#include <mdtools/formula_interpreter.h>
#include <mdtools/strings.h>

#include <cmath>
#include <stdexcept>

namespace Girder {

namespace {

// A line that cannot be carried out; what() says why, for the user.
class Fault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

std::string quoted(const std::string& word)
{
    return "\"" + abridged(word, LongestWord) + "\"";
}

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

std::string counted(std::size_t count, const std::string& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}

// A row of the dispatch table: what a line may begin with, and who carries it out.
struct EditSession::Action {
    const char* name;
    std::size_t fewest; // words after the name
    std::size_t most;
    void (EditSession::*run)(const Words&);
    const char* help;
};

const std::vector<EditSession::Action>& EditSession::actions()
{
    constexpr std::size_t Any = 10000;
    static const std::vector<Action> table = {
        {"length", 2, 2, &EditSession::setLength, "length SPAN VALUE"},
        {"load", 2, 2, &EditSession::setLoad, "load SPAN VALUE"},
        {"add", 3, 3, &EditSession::addPointLoad, "add SPAN POSITION FORCE"},
        {"remove", 2, 2, &EditSession::removePointLoad, "remove SPAN NUMBER"},
        {"select", 1, Any, &EditSession::select, "select SPAN ... | all | none"},
        {"group", 0, Any, &EditSession::beginGroup, "group [DESCRIPTION]"},
        {"end", 0, 0, &EditSession::endGroup, "end"},
        {"undo", 0, 1, &EditSession::undo, "undo [list]"},
        {"redo", 0, 1, &EditSession::redo, "redo [list]"},
        {"show", 0, 0, &EditSession::show, "show"},
        {"solve", 0, 0, &EditSession::solve, "solve"},
        {"save", 0, Any, &EditSession::save, "save [FILE]"},
        {"help", 0, 0, &EditSession::help, "help"},
    };
    return table;
}

EditSession::EditSession(Document& document, const std::string& file, int stations,
                         const NumberFormat& format, std::ostream& out, std::ostream& errors)
    : m_document(document),
      m_file(file),
      m_stations(stations),
      m_format(format),
      m_out(out),
      m_errors(errors),
      m_view([this](const Tools::DataChangedArgument* argument) {
          if (const auto* change = dynamic_cast<const SpanChanged*>(argument))
              showSpan(change->span());
      })
{
    m_document.views().addDataChangedHandler(&m_view);
}

EditSession::~EditSession()
{
    m_document.views().removeDataChangedHandler(&m_view);
}

// A faulty line is reported and passed over, so that a script shows all its faults at once; its
// exit code says that there were some.
bool EditSession::run(std::istream& lines)
{
    bool isGood = true;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        try {
            if (!perform(line))
                break;
        } catch (const Fault& fault) {
            m_errors << "line " << number << ": " << fault.what() << '\n';
            isGood = false;
        }
    }
    if (m_document.isInGroup())
        m_document.endGroup();
    if (m_document.isModified())
        m_out << "The changes were not saved.\n";
    return isGood;
}

// False for the line that ends the session.
bool EditSession::perform(const std::string& line)
{
    Words words = Tools::tokenize(line.substr(0, line.find('#')), " \t\r");
    if (words.empty())
        return true;
    const std::string name = words.front();
    words.erase(words.begin());
    if (name == "quit")
        return false;
    for (const Action& action : actions()) {
        if (name != action.name)
            continue;
        if (words.size() < action.fewest || words.size() > action.most)
            throw Fault(std::string("write: ") + action.help);
        (this->*action.run)(words);
        return true;
    }
    throw Fault("there is no command " + quoted(name));
}

void EditSession::showSpan(std::size_t index)
{
    const Span& span = m_document.span(index);
    m_out << "span " << index + 1 << ": " << toText(span.length) << " m, "
          << toText(span.loads.uniform) << " kN/m, "
          << counted(span.loads.points.size(), "point load")
          << (m_document.isSelected(index) ? ", selected\n" : "\n");
}

// One edit of several spans is one step of undo, unless the user has opened a group already. All
// faults are found before, so that nothing is done by halves.
template <class Edit>
void EditSession::edit(const std::vector<std::size_t>& spans, const Words& words, Edit edit)
{
    const bool needsGroup = spans.size() > 1 && !m_document.isInGroup();
    if (needsGroup)
        m_document.beginGroup("selected spans: " + joined(words));
    for (const std::size_t span : spans)
        edit(span);
    if (needsGroup)
        m_document.endGroup();
}

void EditSession::setLength(const Words& words)
{
    const std::vector<std::size_t> spans = spansOf(words[0]);
    const double length = numberOf(words[1]);
    if (length <= 0.0)
        throw Fault("the length must be greater than 0");
    for (const std::size_t span : spans) {
        for (const PointLoad& load : m_document.span(span).loads.points) {
            if (load.position > length)
                throw Fault("span " + std::to_string(span + 1) + " has a point load behind that");
        }
        if (m_document.span(span).stiffness.back().position > length)
            throw Fault("the stiffness of span " + std::to_string(span + 1) + " goes beyond that");
    }
    edit(spans, {"length", words[1]}, [&](std::size_t i) { m_document.setLength(i, length); });
}

void EditSession::setLoad(const Words& words)
{
    const std::vector<std::size_t> spans = spansOf(words[0]);
    const double load = numberOf(words[1]);
    edit(spans, {"load", words[1]}, [&](std::size_t i) { m_document.setLoad(i, load); });
}

void EditSession::addPointLoad(const Words& words)
{
    const std::vector<std::size_t> spans = spansOf(words[0]);
    const PointLoad load = {numberOf(words[1]), numberOf(words[2])};
    for (const std::size_t span : spans) {
        if (load.position < 0.0 || load.position > m_document.span(span).length)
            throw Fault("the position must lie within span " + std::to_string(span + 1));
    }
    edit(spans, {"add", words[1], words[2]},
         [&](std::size_t i) { m_document.addPointLoad(i, load); });
}

void EditSession::removePointLoad(const Words& words)
{
    const std::size_t span = spanOf(words[0]);
    const std::size_t count = m_document.span(span).loads.points.size();
    m_document.removePointLoad(span, itemOf(words[1], count, "point load"));
}

void EditSession::select(const Words& words)
{
    const std::size_t count = m_document.model().spans.size();
    if (words.front() == "none" || words.front() == "all")
        m_document.clearSelection();
    for (std::size_t i = 0; words.front() == "all" && i < count; ++i)
        m_document.toggleSelection(i);
    if (words.front() != "none" && words.front() != "all") {
        std::vector<std::size_t> spans;
        for (const std::string& word : words)
            spans.push_back(spanOf(word));
        for (const std::size_t span : spans)
            m_document.toggleSelection(span);
    }
    show({});
}

void EditSession::beginGroup(const Words& words)
{
    if (m_document.isInGroup())
        throw Fault("a group is open already");
    m_document.beginGroup(words.empty() ? "several edits" : joined(words));
}

void EditSession::endGroup(const Words&)
{
    if (!m_document.isInGroup())
        throw Fault("no group is open");
    m_document.endGroup();
}

void EditSession::undo(const Words& words)
{
    stepHistory(words, true);
}

void EditSession::redo(const Words& words)
{
    stepHistory(words, false);
}

void EditSession::stepHistory(const Words& words, bool isUndo)
{
    Tools::CommandList& history = m_document.history();
    if (!words.empty()) {
        if (words.front() != "list")
            throw Fault("write: undo [list], redo [list]");
        for (const std::string& description :
             isUndo ? history.getUndoDescriptions() : history.getRedoDescriptions())
            m_out << description << '\n';
        return;
    }
    if (m_document.isInGroup())
        throw Fault("the group must be ended first");
    const auto description = isUndo ? history.undoWithDescription() : history.redoWithDescription();
    if (!description.hasValue())
        throw Fault(isUndo ? "nothing to undo" : "nothing to redo");
    m_out << (isUndo ? "undone: " : "redone: ") << description.getValue() << '\n';
}

void EditSession::show(const Words&)
{
    for (std::size_t i = 0; i < m_document.model().spans.size(); ++i)
        showSpan(i);
}

void EditSession::solve(const Words&)
{
    const Results results = computeResults(m_document.model(), m_stations);
    if (!results.isFinite())
        throw Fault("some number is too large or too small to compute with");
    printListing(results, m_format, m_out);
}

void EditSession::save(const Words& words)
{
    const std::string file = words.empty() ? m_file : joined(words);
    if (!writeModel(m_document.model(), file))
        throw Fault(file + " cannot be written");
    m_document.setSaved();
    m_out << "saved: " << file << '\n';
}

void EditSession::help(const Words&)
{
    for (const Action& action : actions())
        m_out << action.help << '\n';
    m_out << "quit\nSPAN is a number or \"selected\".\n";
}

std::vector<std::size_t> EditSession::spansOf(const std::string& word) const
{
    if (word != "selected")
        return {spanOf(word)};
    std::vector<std::size_t> spans;
    for (std::size_t i = 0; i < m_document.model().spans.size(); ++i) {
        if (m_document.isSelected(i))
            spans.push_back(i);
    }
    if (spans.empty())
        throw Fault("no span is selected");
    return spans;
}

std::size_t EditSession::spanOf(const std::string& word) const
{
    return itemOf(word, m_document.model().spans.size(), "span");
}

double EditSession::numberOf(const std::string& word)
{
    const auto value = Tools::FormulaInterpreter::tryEvaluate(word);
    if (!value.hasValue() || !std::isfinite(value.getValue()))
        throw Fault(quoted(word) + " is no number");
    return value.getValue();
}

std::size_t EditSession::itemOf(const std::string& word, std::size_t count, const std::string& what)
{
    int number = 0;
    if (!isWholeNumber(word, number) || number < 1 || static_cast<std::size_t>(number) > count)
        throw Fault("there is no " + what + " " + quoted(word));
    return static_cast<std::size_t>(number) - 1;
}

}
