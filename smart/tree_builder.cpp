#include "smart/tree_builder.h"

#include <new>
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

TreeBuilder::TreeBuilder(Record* record, Sequence* sequence)
    : m_record(record), m_sequence(sequence)
{
    Frame outermost;
    outermost.isSequence = sequence != nullptr;
    outermost.isBuilt = true;
    m_frames.push_back(std::move(outermost));
}

void TreeBuilder::store(const std::string& name, std::string_view text)
{
    if (tryTransition(name, Type::Text))
        m_texts.emplace_back(text);
    else
        RecordData::provide<std::string>(recordOf(m_frames.back()), name, Type::Text) = text;
}

void TreeBuilder::store(const std::string& name, const Number& number)
{
    Frame& frame = m_frames.back();
    if (tryTransition(name, number.isReal ? Type::Real : Type::Decimal))
        pushNumber(m_shapes[frame.shape].cell, number);
    else if (number.isReal)
        RecordData::provide<double>(recordOf(frame), name, Type::Real) = number.real;
    else
        RecordData::provide<int>(recordOf(frame), name, Type::Decimal) = number.decimal;
}

void TreeBuilder::openEntry(const std::string& name, Type type)
{
    if (!tryTransition(name, type))
        m_outerNames.push_back(name);
    openNested(type);
}

// Notes the entry's name and type in the shape of the innermost record. False if the entry is to be
// stored at once.
bool TreeBuilder::tryTransition(const std::string& name, Type type)
{
    Frame& frame = m_frames.back();
    if (frame.isBuilt)
        return false;
    const std::uint32_t shape = m_shapes.transition(frame.shape, frame.expected, name, type);
    if (shape != 0) {
        enter(shape);
        return true;
    }
    frame.record = build(frame);
    frame.isBuilt = true;
    frame.shape = 0;
    frame.expected = 0;
    return false;
}

bool TreeBuilder::close()
{
    if (isOutermost())
        return true;
    Frame frame = take(m_frames);
    if (frame.isSequence)
        deliver(std::move(frame.sequence));
    else
        deliver(frame.isBuilt ? std::move(frame.record) : build(frame), frame.isBuilt);
    return false;
}

// What has been completed belongs to the frame that is the innermost one by now.
void TreeBuilder::deliver(Record record, bool isBuilt)
{
    Frame& frame = m_frames.back();
    if (frame.isSequence && isBuilt)
        sequenceOf(frame).push_back(std::move(record));
    else if (frame.isSequence)
        SequenceData::append(sequenceOf(frame)) = std::move(record);
    else if (frame.isBuilt)
        RecordData::provide<Record>(recordOf(frame), take(m_outerNames), Type::Record) =
            std::move(record);
    else
        m_records.push_back(std::move(record));
}

void TreeBuilder::deliver(Sequence sequence)
{
    Frame& frame = m_frames.back();
    if (frame.isBuilt)
        RecordData::provide<Sequence>(recordOf(frame), take(m_outerNames), Type::Sequence) =
            std::move(sequence);
    else
        m_sequences.push_back(std::move(sequence));
}

// Makes the record from the values on the stacks: the way back through the shapes is the order in
// which the stacks give them up.
Record TreeBuilder::build(const Frame& frame)
{
    Record record;
    if (frame.shape == 0)
        return record;
    RecordData* data = RecordData::allocate(m_shapes.indexOf(frame.shape), frame.reals, m_arena);
    RecordData::of(record) = data;
    for (std::uint32_t i = frame.shape; i != 0; i = m_shapes[i].parent)
        buildValue(data->inlineCell(m_shapes[i].cell), m_shapes[i].type);
    return record;
}

void TreeBuilder::buildValue(Cell* cell, Type type)
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
