#include "smart/record_reader.h"

#include <utility>

namespace Tools::Smart {

namespace {

template <class T>
T take(std::vector<T>& stack)
{
    T value = std::move(stack.back());
    stack.pop_back();
    return value;
}

}

void RecordReader::read(Record& record)
{
    m_record = &record;
    run(Token::OpenParenthesis);
}

void RecordReader::read(Sequence& sequence)
{
    m_sequence = &sequence;
    run(Token::OpenBracket);
}

void RecordReader::run(Token::Type opening)
{
    if (m_iterator.m_token.getType() != opening)
        throw WrongToken(opening, m_iterator.m_token);
    Lexer lexer(*m_iterator.m_stream, m_iterator.m_buffer);
    m_lexer = &lexer;
    const auto finish = [&] {
        lexer.storeIn(m_iterator.m_token);
        m_iterator.m_end = m_iterator.m_end || lexer.hasEnded();
    };
    try {
        readAll();
    } catch (...) {
        finish();
        throw;
    }
    finish();
}

// Each turn handles the current token and reads the next one.
void RecordReader::readAll()
{
    Frame outermost;
    outermost.isSequence = m_sequence != nullptr;
    outermost.isBuilt = true;
    m_frames.push_back(std::move(outermost));
    for (advance(); !hasEnded(); advance()) {
        const Token::Type type = m_lexer->type();
        Frame& frame = m_frames.back();
        if (type == (frame.isSequence ? Token::CloseBracket : Token::CloseParenthesis)) {
            if (close())
                return;
        } else if (frame.isSequence) {
            openRecord();
        } else if (!readEntry(frame)) {
            break;
        }
    }
    // The input has ended. Each level that is still open takes note of it by reading once more.
    while (!close())
        advance();
}

// False if the input ended before the value.
bool RecordReader::readEntry(Frame& frame)
{
    if (m_lexer->type() != Token::Identifier)
        fail(Token::Identifier);
    m_name.assign(m_lexer->text());
    advance();
    if (hasEnded())
        return false;
    if (m_lexer->type() != Token::Equals)
        fail(Token::Equals);
    advance();
    if (hasEnded())
        return false;
    readValue(frame);
    return true;
}

void RecordReader::readValue(Frame& frame)
{
    switch (m_lexer->type()) {
    case Token::Text:
        storeText(frame);
        break;
    case Token::Decimal:
        store(frame, Type::Decimal, m_lexer->decimal());
        break;
    case Token::Real:
        store(frame, Type::Real, m_lexer->real());
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

void RecordReader::storeText(Frame& frame)
{
    if (step(frame, Type::Text))
        m_texts.emplace_back(m_lexer->text());
    else
        RecordData::provide<std::string>(recordOf(frame), m_name, Type::Text) = m_lexer->text();
}

template <class T>
void RecordReader::store(Frame& frame, Type type, T value)
{
    const std::uint32_t cell = m_structures[frame.node].usedCells;
    if (step(frame, type)) {
        if (type == Type::Real)
            frame.reals |= RecordData::realFlag(cell);
        new (m_numbers.emplace_back().bytes) T(value);
    } else {
        RecordData::provide<T>(recordOf(frame), m_name, type) = value;
    }
}

void RecordReader::openNested(Frame& frame, Type type)
{
    if (!step(frame, type))
        m_outerNames.push_back(m_name);
    if (type == Type::Record) {
        openRecord();
        return;
    }
    Frame nested;
    nested.isSequence = true;
    nested.node = frame.node;
    m_frames.push_back(std::move(nested));
}

// The current token should open a record.
void RecordReader::openRecord()
{
    if (m_lexer->type() != Token::OpenParenthesis)
        fail(Token::OpenParenthesis);
    Frame nested;
    nested.expected = m_structures[m_frames.back().node].nestedFirst;
    m_frames.push_back(std::move(nested));
}

// Notes the entry's name and type in the list of the frame. False if the entry is to be stored at
// once.
bool RecordReader::step(Frame& frame, Type type)
{
    if (frame.isBuilt)
        return false;
    const std::uint32_t node = m_structures.step(frame.node, frame.expected, m_name, type);
    if (node == 0) {
        frame.record = build(frame);
        frame.isBuilt = true;
        frame.node = 0;
        return false;
    }
    if (frame.node == 0)
        m_structures.expect((&frame - 1)->node, node);
    frame.node = node;
    frame.expected = m_structures[node].next;
    return true;
}

// Makes the record from the values on the stacks.
Record RecordReader::build(const Frame& frame)
{
    Record record;
    if (frame.node == 0)
        return record;
    RecordData* data = RecordData::allocate(m_structures.indexOf(frame.node), frame.reals);
    RecordData::of(record) = data;
    for (std::uint32_t i = frame.node; i != 0; i = m_structures[i].parent)
        buildValue(data->cellAt(m_structures[i].cell), m_structures[i].type);
    return record;
}

void RecordReader::buildValue(Cell* cell, Type type)
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

// Ends the innermost frame. True if it was the outermost.
bool RecordReader::close()
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

void RecordReader::deliver(Record record, bool isBuilt)
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

void RecordReader::deliver(Sequence sequence)
{
    Frame& outer = m_frames.back();
    if (outer.isBuilt)
        RecordData::provide<Sequence>(recordOf(outer), take(m_outerNames), Type::Sequence) =
            std::move(sequence);
    else
        m_sequences.push_back(std::move(sequence));
}

void RecordReader::fail(Token::Type wanted)
{
    Token actual;
    m_lexer->storeIn(actual);
    throw WrongToken(wanted, actual);
}

}
