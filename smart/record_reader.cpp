#include "smart/record_reader.h"

#include "smart/lexer.h"
#include "smart/scan.h"
#include "smart/tree_builder.h"

#include <cstring>

namespace Tools::Smart {

namespace {

// Reads what the predictions of the shapes foretell, straight from the stream's area and without
// tokens: comparing is quicker than finding out. It changes nothing before the whole entry or mark
// has turned out as expected, and leaves all else to the grammar, which starts at the same
// character. Each of the functions with a position returns where that ended, null if it is
// something else.
class PredictionReader {
public:
    PredictionReader(Lexer& lexer, TreeBuilder& builder) : m_lexer(lexer), m_builder(builder) {}

    // As far as the predictions come true.
    void run()
    {
        for (const char* p = m_lexer.areaNext(); p != nullptr;)
            p = readNext(p);
    }

private:
    // What must be left of the area, so that the common form of an entry needs no more checks.
    static constexpr std::ptrdiff_t Space = 48;
    static_assert(Space >= Numbers::ShortSpace && Space >= 2 * BlockSize);

    const char* readNext(const char* p);
    const char* readEntry(const char* p);
    const char* skipName(const ShapeTree::Shape& shape, const char* p) const;
    const char* readText(ShapeTree::Shape& shape, const char* p);
    const char* readNumber(const ShapeTree::Shape& shape, const char* p);
    const char* readOpening(Type type, const char* p);

    Lexer& m_lexer;
    TreeBuilder& m_builder;
};

// A mark within a record of known shape, or the entry that comes next in it.
const char* PredictionReader::readNext(const char* p)
{
    const char* const end = m_lexer.areaEnd();
    if (end - p < Space || m_builder.isOutermost())
        return nullptr;
    const TreeBuilder::Frame& frame = m_builder.innermost();
    const bool isEntry = frame.expected != 0;
    ShapeTree::Shape& shape = m_builder.shape(isEntry ? frame.expected : frame.shape);
    p = skipBlanks(p, end, isEntry ? shape.nameBlanks : shape.markBlanks);
    if (end - p < Space)
        return nullptr;
    if (*p == (frame.isSequence ? ']' : ')')) {
        m_lexer.take(++p, frame.isSequence ? Token::CloseBracket : Token::CloseParenthesis);
        m_builder.close();
        return p;
    }
    if (!frame.isSequence)
        return isEntry ? readEntry(p) : nullptr;
    if (*p != '(')
        return nullptr;
    m_lexer.take(++p, Token::OpenParenthesis);
    m_builder.openRecord();
    return p;
}

const char* PredictionReader::readEntry(const char* p)
{
    ShapeTree::Shape& shape = m_builder.shape(m_builder.innermost().expected);
    const char* const end = m_lexer.areaEnd();
    p = skipName(shape, p);
    if (p == nullptr || end - p < Space)
        return nullptr;
    p += *p == ' ' ? 1 : 0;
    if (*p != '=')
        return nullptr;
    p += p[1] == ' ' ? 2 : 1;
    if (is(*p, Blank))
        p = skipBlanks(p, end, shape.valueBlanks);
    if (end - p < Space)
        return nullptr;
    switch (*p) {
    case '"':
        return shape.type == Type::Text ? readText(shape, p + 1) : nullptr;
    case '(':
    case '[':
        return readOpening(shape.type, p);
    default:
        return is(*p, NumberStart) ? readNumber(shape, p) : nullptr;
    }
}

// One block decides for most names; only longer ones are compared to their end.
const char* PredictionReader::skipName(const ShapeTree::Shape& shape, const char* p) const
{
    if (!startsWith(p, shape.start, shape.startSize))
        return nullptr;
    p += shape.startSize;
    if (shape.startSize < sizeof shape.start)
        return p;
    const std::string_view rest = shape.name->text().substr(shape.startSize);
    const bool isEqual = m_lexer.areaEnd() - p >= static_cast<std::ptrdiff_t>(rest.size()) &&
                         std::memcmp(p, rest.data(), rest.size()) == 0;
    return isEqual ? p + rest.size() : nullptr;
}

const char* PredictionReader::readText(ShapeTree::Shape& shape, const char* p)
{
    const char* const end = m_lexer.areaEnd();
    const char* const quote = findQuoteOrBackslash(p, end);
    if (end - quote < Space || *quote != '"')
        return nullptr;
    // The text may be continued.
    const char* const next = skipBlanks(quote + 1, end, shape.textBlanks);
    if (next == end || *next == '"' || *next == '#')
        return nullptr;
    const std::string_view text(p, static_cast<std::size_t>(quote - p));
    m_builder.storeExpected(text);
    m_lexer.takeText(next, text);
    return next;
}

const char* PredictionReader::readNumber(const ShapeTree::Shape& shape, const char* p)
{
    Number number;
    const char* stop = readShortNumber(p, number);
    if (stop == nullptr || !is(*stop, Delimiter)) {
        Number exact;
        stop = findDelimiter(p, m_lexer.areaEnd());
        const std::string_view word(p, static_cast<std::size_t>(stop - p));
        if (stop == m_lexer.areaEnd() || !parseNumber(word, exact))
            return nullptr;
        number = exact;
    }
    const Type type = number.isReal ? Type::Real : Type::Decimal;
    if (RecordData::indexedType(type, shape.cell) != shape.type)
        return nullptr;
    m_builder.storeExpected(number);
    m_lexer.takeNumber(stop, number);
    return stop;
}

const char* PredictionReader::readOpening(Type type, const char* p)
{
    const bool isRecord = *p == '(';
    if (type != (isRecord ? Type::Record : Type::Sequence))
        return nullptr;
    m_lexer.take(++p, isRecord ? Token::OpenParenthesis : Token::OpenBracket);
    m_builder.openExpected(type);
    return p;
}

// Reads a tree by its grammar, token by token:
//     record   = "(" { identifier "=" value } ")"
//     sequence = "[" { record } "]"
//     value    = text | decimal | real | record | sequence
// After each entry and mark it lets the predictions try their luck.
class GrammarReader {
public:
    GrammarReader(Lexer& lexer, TreeBuilder& builder)
        : m_lexer(lexer), m_builder(builder), m_prediction(lexer, builder)
    {}

    // The opening mark of the outermost record or sequence is the last token that was read.
    void run();

private:
    bool readEntry();
    void readValue();
    void openRecord();
    [[noreturn]] void fail(Token::Type wanted);

    Lexer& m_lexer;
    TreeBuilder& m_builder;
    PredictionReader m_prediction;
    // Of the current entry.
    std::string m_name;
};

// Each turn handles the current token and reads the next one.
void GrammarReader::run()
{
    for (m_lexer.next(); !m_lexer.hasEnded(); m_lexer.next()) {
        const Token::Type type = m_lexer.type();
        const bool isSequence = m_builder.innermost().isSequence;
        if (type == (isSequence ? Token::CloseBracket : Token::CloseParenthesis)) {
            if (m_builder.close())
                return;
        } else if (isSequence) {
            openRecord();
        } else if (!readEntry()) {
            break;
        }
        m_prediction.run();
    }
    // The input has ended. Each level that is still open takes note of it by reading once more.
    while (!m_builder.close())
        m_lexer.next();
}

// False if the input ended before the value.
bool GrammarReader::readEntry()
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
    readValue();
    return true;
}

void GrammarReader::readValue()
{
    switch (m_lexer.type()) {
    case Token::Text:
        m_builder.store(m_name, m_lexer.text());
        break;
    case Token::Decimal:
    case Token::Real:
        m_builder.store(m_name, m_lexer.number());
        break;
    case Token::OpenParenthesis:
        m_builder.openEntry(m_name, Type::Record);
        break;
    case Token::OpenBracket:
        m_builder.openEntry(m_name, Type::Sequence);
        break;
    default:
        fail(Token::Text);
    }
}

// The current token should open a record.
void GrammarReader::openRecord()
{
    if (m_lexer.type() != Token::OpenParenthesis)
        fail(Token::OpenParenthesis);
    m_builder.openRecord();
}

void GrammarReader::fail(Token::Type wanted)
{
    Token actual;
    m_lexer.storeIn(actual);
    throw WrongToken(wanted, actual);
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
        TreeBuilder builder(record, sequence);
        GrammarReader(lexer, builder).run();
    } catch (...) {
        finish();
        throw;
    }
    finish();
}

}
