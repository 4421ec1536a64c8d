#include "smart/record_reader.h"

#include "smart/lexer.h"
#include "smart/record_data.h"
#include "smart/scan.h"
#include "smart/structures.h"

#include <cstring>
#include <utility>
#include <vector>

namespace Tools::Smart {

namespace {

// What must be left of the area for an expected token, so that its common form needs no more
// checks.
constexpr std::ptrdiff_t Space = 48;
static_assert(Space >= Numbers::ShortSpace);

template <class T>
T take(std::vector<T>& stack)
{
    T value = std::move(stack.back());
    stack.pop_back();
    return value;
}

// A record or sequence that is not complete.
struct Frame {
    bool isSequence = false;
    // False: the values are on the stacks, and `node` tells their names.
    bool isBuilt = false;
    std::uint32_t node = 0;
    std::uint32_t expected = 0;
    std::uint32_t reals = 0;
    Record record;
    Sequence sequence;
};

// Reads a tree, with the records within records on a stack of its own.
//
// The outermost record or sequence gets its entries one by one, because they stay when reading
// fails. All others are built at once when they are complete (see Structures); until then their
// values wait on stacks. A record for which Structures has no step any more is built entry by entry
// as well.
class TreeReader {
public:
    // One of the two is null.
    TreeReader(Lexer& lexer, Record* record, Sequence* sequence);

    void run();

private:
    // By the grammar, token by token.
    bool readEntry(Frame& frame);
    void readValue(Frame& frame);
    void storeText(Frame& frame);
    void storeNumber(Frame& frame);
    void openNested(Frame& frame, Type type);
    void openRecord();
    void openSequence();
    bool close();
    void deliver(Record record, bool isBuilt);
    void deliver(Sequence sequence);
    [[noreturn]] void fail(Token::Type wanted);

    // What is as expected, and lies in the stream's area, is read without tokens. Each of these
    // returns where that ended, null if it is something else.
    void readExpected();
    const char* readExpected(const char* p);
    const char* readEntry(Frame& frame, const char* p);
    const char* skipName(const Structures::Node& node, const char* p) const;
    const char* readText(Frame& frame, Structures::Node& node, const char* p);
    const char* readNumber(Frame& frame, const Structures::Node& node, const char* p);
    const char* readOpening(Frame& frame, Type type, const char* p);

    bool step(Frame& frame, Type type);
    void enter(Frame& frame, std::uint32_t node);
    void pushNumber(Frame& frame, std::uint32_t cell, const Number& number);
    Record build(const Frame& frame);
    void buildValue(Cell* cell, Type type);

    bool isOutermost(const Frame& frame) const { return &frame == m_frames.data(); }
    Record& recordOf(Frame& frame) { return isOutermost(frame) ? *m_record : frame.record; }
    Sequence& sequenceOf(Frame& frame) { return isOutermost(frame) ? *m_sequence : frame.sequence; }

    Lexer& m_lexer;
    Record* m_record;
    Sequence* m_sequence;

    std::vector<Frame> m_frames;
    // The values of all frames that are not built yet, by kind.
    std::vector<Cell> m_numbers;
    std::vector<std::string> m_texts;
    std::vector<Record> m_records;
    std::vector<Sequence> m_sequences;
    // The name of the current entry, and those of the built frames whose nested value is being
    // read.
    std::string m_name;
    std::vector<std::string> m_outerNames;
    Structures m_structures;
    PagePool m_pool;
};

TreeReader::TreeReader(Lexer& lexer, Record* record, Sequence* sequence)
    : m_lexer(lexer), m_record(record), m_sequence(sequence)
{
    Frame outermost;
    outermost.isSequence = sequence != nullptr;
    outermost.isBuilt = true;
    m_frames.push_back(std::move(outermost));
}

// Each turn handles the current token and reads the next one.
void TreeReader::run()
{
    for (m_lexer.next(); !m_lexer.hasEnded(); m_lexer.next()) {
        const Token::Type type = m_lexer.type();
        Frame& frame = m_frames.back();
        if (type == (frame.isSequence ? Token::CloseBracket : Token::CloseParenthesis)) {
            if (close())
                return;
        } else if (frame.isSequence) {
            openRecord();
        } else if (!readEntry(frame)) {
            break;
        }
        readExpected();
    }
    // The input has ended. Each level that is still open takes note of it by reading once more.
    while (!close())
        m_lexer.next();
}

// False if the input ended before the value.
bool TreeReader::readEntry(Frame& frame)
{
    if (m_lexer.type() != Token::Identifier)
        fail(Token::Identifier);
    m_name.assign(m_lexer.text());
    m_lexer.next();
    if (m_lexer.hasEnded())
        return false;
    if (m_lexer.type() != Token::Equals)
        fail(Token::Equals);
    m_lexer.next();
    if (m_lexer.hasEnded())
        return false;
    readValue(frame);
    return true;
}

void TreeReader::readValue(Frame& frame)
{
    switch (m_lexer.type()) {
    case Token::Text:
        storeText(frame);
        break;
    case Token::Decimal:
    case Token::Real:
        storeNumber(frame);
        break;
    case Token::OpenParenthesis:
        openNested(frame, Type::Record);
        break;
    case Token::OpenBracket:
        openNested(frame, Type::Sequence);
        break;
    default:
        fail(Token::Text);
    }
}

void TreeReader::storeText(Frame& frame)
{
    if (step(frame, Type::Text))
        m_texts.emplace_back(m_lexer.text());
    else
        RecordData::provide<std::string>(recordOf(frame), m_name, Type::Text) = m_lexer.text();
}

void TreeReader::storeNumber(Frame& frame)
{
    const Number& number = m_lexer.number();
    if (step(frame, number.isReal ? Type::Real : Type::Decimal))
        pushNumber(frame, m_structures[frame.node].cell, number);
    else if (number.isReal)
        RecordData::provide<double>(recordOf(frame), m_name, Type::Real) = number.real;
    else
        RecordData::provide<int>(recordOf(frame), m_name, Type::Decimal) = number.decimal;
}

void TreeReader::openNested(Frame& frame, Type type)
{
    if (!step(frame, type))
        m_outerNames.push_back(m_name);
    if (type == Type::Record)
        openRecord();
    else
        openSequence();
}

// The current token should open a record.
void TreeReader::openRecord()
{
    if (m_lexer.type() != Token::OpenParenthesis)
        fail(Token::OpenParenthesis);
    const std::uint32_t outer = m_frames.back().node;
    m_frames.emplace_back().expected = m_structures[outer].nestedFirst;
}

void TreeReader::openSequence()
{
    const std::uint32_t outer = m_frames.back().node;
    Frame& nested = m_frames.emplace_back();
    nested.isSequence = true;
    nested.node = outer;
}

// Ends the innermost frame. True if it was the outermost.
bool TreeReader::close()
{
    if (m_frames.size() == 1)
        return true;
    Frame frame = take(m_frames);
    if (frame.isSequence)
        deliver(std::move(frame.sequence));
    else
        deliver(frame.isBuilt ? std::move(frame.record) : build(frame), frame.isBuilt);
    return false;
}

void TreeReader::deliver(Record record, bool isBuilt)
{
    Frame& outer = m_frames.back();
    if (outer.isSequence && isBuilt)
        sequenceOf(outer).push_back(std::move(record));
    else if (outer.isSequence)
        SequenceData::append(sequenceOf(outer)) = std::move(record);
    else if (outer.isBuilt)
        RecordData::provide<Record>(recordOf(outer), take(m_outerNames), Type::Record) =
            std::move(record);
    else
        m_records.push_back(std::move(record));
}

void TreeReader::deliver(Sequence sequence)
{
    Frame& outer = m_frames.back();
    if (outer.isBuilt)
        RecordData::provide<Sequence>(recordOf(outer), take(m_outerNames), Type::Sequence) =
            std::move(sequence);
    else
        m_sequences.push_back(std::move(sequence));
}

void TreeReader::fail(Token::Type wanted)
{
    Token actual;
    m_lexer.storeIn(actual);
    throw WrongToken(wanted, actual);
}

void TreeReader::readExpected()
{
    for (const char* p = m_lexer.areaNext(); p != nullptr;)
        p = readExpected(p);
}

// A mark within a record of known structure, or the entry that comes next in it.
const char* TreeReader::readExpected(const char* p)
{
    const char* const end = m_lexer.areaEnd();
    Frame& frame = m_frames.back();
    if (end - p < Space || isOutermost(frame))
        return nullptr;
    const bool isEntry = frame.expected != 0;
    Structures::Node& node = m_structures[isEntry ? frame.expected : frame.node];
    p = skipBlanks(p, end, isEntry ? node.nameBlanks : node.markBlanks);
    if (end - p < Space)
        return nullptr;
    if (*p == (frame.isSequence ? ']' : ')')) {
        m_lexer.take(++p, frame.isSequence ? Token::CloseBracket : Token::CloseParenthesis);
        close();
        return p;
    }
    if (!frame.isSequence)
        return isEntry ? readEntry(frame, p) : nullptr;
    if (*p != '(')
        return nullptr;
    m_lexer.take(++p, Token::OpenParenthesis);
    openRecord();
    return p;
}

const char* TreeReader::readEntry(Frame& frame, const char* p)
{
    Structures::Node& node = m_structures[frame.expected];
    const char* const end = m_lexer.areaEnd();
    p = skipName(node, p);
    if (p == nullptr || end - p < Space)
        return nullptr;
    p += *p == ' ' ? 1 : 0;
    if (*p != '=')
        return nullptr;
    p += p[1] == ' ' ? 2 : 1;
    if (is(*p, Blank))
        p = skipBlanks(p, end, node.valueBlanks);
    if (end - p < Space)
        return nullptr;
    switch (*p) {
    case '"':
        return node.type == Type::Text ? readText(frame, node, p + 1) : nullptr;
    case '(':
    case '[':
        return readOpening(frame, node.type, p);
    default:
        return is(*p, NumberStart) ? readNumber(frame, node, p) : nullptr;
    }
}

const char* TreeReader::skipName(const Structures::Node& node, const char* p) const
{
    if (!startsWith(p, node.start, node.startSize))
        return nullptr;
    p += node.startSize;
    if (node.startSize < sizeof node.start)
        return p;
    const std::string_view rest = node.name->text().substr(node.startSize);
    const bool isEqual = m_lexer.areaEnd() - p >= static_cast<std::ptrdiff_t>(rest.size()) &&
                         std::memcmp(p, rest.data(), rest.size()) == 0;
    return isEqual ? p + rest.size() : nullptr;
}

const char* TreeReader::readText(Frame& frame, Structures::Node& node, const char* p)
{
    const char* const end = m_lexer.areaEnd();
    const char* const quote = findQuoteOrBackslash(p, end);
    if (end - quote < Space || *quote != '"')
        return nullptr;
    // The text may be continued.
    const char* const next = skipBlanks(quote + 1, end, node.textBlanks);
    if (next == end || *next == '"' || *next == '#')
        return nullptr;
    const std::string_view text(p, static_cast<std::size_t>(quote - p));
    m_texts.emplace_back(text);
    m_lexer.takeText(next, text);
    enter(frame, frame.expected);
    return next;
}

const char* TreeReader::readNumber(Frame& frame, const Structures::Node& node, const char* p)
{
    Number number;
    const char* stop = Numbers::readShort(p, number);
    if (stop == nullptr || !is(*stop, Delimiter)) {
        Number exact;
        stop = findDelimiter(p, m_lexer.areaEnd());
        const std::string_view word(p, static_cast<std::size_t>(stop - p));
        if (stop == m_lexer.areaEnd() || !parseNumber(word, exact))
            return nullptr;
        number = exact;
    }
    const Type type = number.isReal ? Type::Real : Type::Decimal;
    if (RecordData::indexedType(type, node.cell) != node.type)
        return nullptr;
    pushNumber(frame, node.cell, number);
    m_lexer.takeNumber(stop, number);
    enter(frame, frame.expected);
    return stop;
}

const char* TreeReader::readOpening(Frame& frame, Type type, const char* p)
{
    const bool isRecord = *p == '(';
    if (type != (isRecord ? Type::Record : Type::Sequence))
        return nullptr;
    m_lexer.take(++p, isRecord ? Token::OpenParenthesis : Token::OpenBracket);
    enter(frame, frame.expected);
    if (isRecord)
        openRecord();
    else
        openSequence();
    return p;
}

// Notes the entry's name and type in the list of the frame. False if the entry is to be stored at
// once.
bool TreeReader::step(Frame& frame, Type type)
{
    if (frame.isBuilt)
        return false;
    const std::uint32_t node = m_structures.step(frame.node, frame.expected, m_name, type);
    if (node != 0) {
        enter(frame, node);
        return true;
    }
    frame.record = build(frame);
    frame.isBuilt = true;
    frame.node = 0;
    frame.expected = 0;
    return false;
}

void TreeReader::enter(Frame& frame, std::uint32_t node)
{
    // The frame around this one is a record whose entry this is, or a sequence.
    if (frame.node == 0)
        m_structures[(&frame - 1)->node].nestedFirst = node;
    m_structures[frame.node].next = node;
    frame.node = node;
    frame.expected = m_structures[node].next;
}

void TreeReader::pushNumber(Frame& frame, std::uint32_t cell, const Number& number)
{
    Cell value;
    if (number.isReal) {
        frame.reals |= RecordData::realFlag(cell);
        std::memcpy(value.bytes, &number.real, sizeof number.real);
    } else {
        std::memcpy(value.bytes, &number.decimal, sizeof number.decimal);
    }
    m_numbers.push_back(value);
}

// Makes the record from the values on the stacks.
Record TreeReader::build(const Frame& frame)
{
    Record record;
    if (frame.node == 0)
        return record;
    RecordData* data = RecordData::allocate(m_structures.indexOf(frame.node), frame.reals, m_pool);
    RecordData::of(record) = data;
    for (std::uint32_t i = frame.node; i != 0; i = m_structures[i].parent)
        buildValue(data->inlineCell(m_structures[i].cell), m_structures[i].type);
    return record;
}

void TreeReader::buildValue(Cell* cell, Type type)
{
    switch (type) {
    case Type::Text:
        new (cell) std::string(take(m_texts));
        break;
    case Type::Sequence:
        new (cell) Sequence(take(m_sequences));
        break;
    case Type::Record:
        new (cell) Record(take(m_records));
        break;
    default:
        new (cell) Cell(take(m_numbers));
        break;
    }
}

}

void RecordReader::read(IstreamTokenIterator& tokens, Record& record)
{
    read(tokens, Token::OpenParenthesis, &record, nullptr);
}

void RecordReader::read(IstreamTokenIterator& tokens, Sequence& sequence)
{
    read(tokens, Token::OpenBracket, nullptr, &sequence);
}

void RecordReader::read(IstreamTokenIterator& tokens, Token::Type opening, Record* record,
                        Sequence* sequence)
{
    if (tokens.m_token.getType() != opening)
        throw WrongToken(opening, tokens.m_token);
    Lexer lexer(*tokens.m_stream, tokens.m_buffer, tokens.m_end);
    const auto finish = [&] {
        lexer.storeIn(tokens.m_token);
        tokens.m_end = lexer.hasEnded();
    };
    try {
        TreeReader(lexer, record, sequence).run();
    } catch (...) {
        finish();
        throw;
    }
    finish();
}

}
