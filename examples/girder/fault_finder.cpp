#include "fault_finder.h"

#include "remark_text.h"

#include <mdtools/smart_token.h>

#include <algorithm>
#include <sstream>
#include <vector>

namespace Girder {

namespace {

using Tools::Smart::IstreamTokenIterator;
using Tools::Smart::Token;

constexpr const char* Delimiters = " \t\r\n=()[]";

// Walks over the tokens of a text as the grammar of records wants them: a pushdown automaton, whose
// stack is m_levels, so that depth costs no stack of the processor. Each step is false, with
// m_fault filled in, where the text leaves the grammar.
class Walk {
public:
    explicit Walk(const std::string& text) : m_text(text), m_stream(text), m_token(m_stream) {}

    Fault find();

private:
    // What is open at the moment: a record, with the name of its current entry, or a sequence, with
    // the number of its current record.
    struct Level {
        bool isRecord = true;
        std::string name;
        int index = 0;
    };

    bool is(Token::Type type) const { return !m_token.end() && (*m_token).getType() == type; }
    void advance();
    bool stepRecord();
    bool stepSequence();
    bool readValue();
    bool close();
    bool fail(const std::string& wanted);
    std::string actual() const;
    std::string path() const;
    std::size_t tokenStart() const;

    const std::string& m_text;
    std::istringstream m_stream;
    std::size_t m_before = 0; // where the stream was before it gave the current token
    IstreamTokenIterator m_token;
    std::vector<Level> m_levels;
    Fault m_fault;
};

Fault Walk::find()
{
    if (!is(Token::OpenParenthesis)) {
        fail("\"(\"");
        return m_fault;
    }
    m_levels.push_back({});
    advance();
    while (!m_levels.empty()) {
        if (!(m_levels.back().isRecord ? stepRecord() : stepSequence()))
            return m_fault;
    }
    fail("nothing more behind the closing \")\"");
    return m_fault;
}

void Walk::advance()
{
    const auto position = m_stream.tellg();
    m_before = position < 0 ? m_text.size() : static_cast<std::size_t>(position);
    ++m_token;
}

bool Walk::stepRecord()
{
    if (is(Token::CloseParenthesis))
        return close();
    if (!is(Token::Identifier))
        return fail("the name of an entry or \")\"");
    m_levels.back().name = (*m_token).getValText();
    advance();
    if (!is(Token::Equals))
        return fail("\"=\"");
    advance();
    return readValue();
}

bool Walk::readValue()
{
    if (is(Token::OpenParenthesis))
        m_levels.push_back({});
    else if (is(Token::OpenBracket))
        m_levels.push_back({false, "", 0});
    else if (!is(Token::Text) && !is(Token::Decimal) && !is(Token::Real))
        return fail("a value");
    advance();
    return true;
}

bool Walk::stepSequence()
{
    if (is(Token::CloseBracket))
        return close();
    ++m_levels.back().index;
    if (!is(Token::OpenParenthesis))
        return fail("\"(\" or \"]\"");
    m_levels.push_back({});
    advance();
    return true;
}

bool Walk::close()
{
    m_levels.pop_back();
    advance();
    return true;
}

bool Walk::fail(const std::string& wanted)
{
    const auto start = m_text.begin() + static_cast<std::ptrdiff_t>(tokenStart());
    m_fault.entry = abridged(path(), LongestEntry);
    m_fault.line = 1 + static_cast<int>(std::count(m_text.begin(), start, '\n'));
    m_fault.text = "expected " + wanted + ", but found " + actual();
    return false;
}

std::string Walk::actual() const
{
    const std::size_t start = tokenStart();
    if (start == m_text.size())
        return "the end of the text";
    if (m_text[start] == '"')
        return m_token.end() ? "a quoted text without its end" : "a quoted text";
    const std::size_t end = m_text.find_first_of(Delimiters, start);
    const std::size_t length = std::max<std::size_t>(1, std::min(end, m_text.size()) - start);
    return "\"" + abridged(m_text.substr(start, length), LongestWord) + "\"";
}

std::string Walk::path() const
{
    std::string result;
    for (const Level& level : m_levels) {
        if (!level.isRecord)
            result += "[" + std::to_string(level.index) + "]";
        else if (!level.name.empty())
            result += (result.empty() ? "" : ".") + level.name;
    }
    return result;
}

// Behind the blanks and comments before the current token.
std::size_t Walk::tokenStart() const
{
    std::size_t start = std::min(m_before, m_text.size());
    while (true) {
        start = std::min(m_text.find_first_not_of(" \t\r\n", start), m_text.size());
        if (start == m_text.size() || m_text[start] != '#')
            return start;
        start = std::min(m_text.find('\n', start), m_text.size());
    }
}

}

Fault findFault(const std::string& text)
{
    return Walk(text).find();
}

}
