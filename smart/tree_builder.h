#pragma once

#include "smart/numbers.h"
#include "smart/record_data.h"
#include "smart/shape_tree.h"

#include <mdtools/smart_record.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace Tools::Smart {

// Builds a tree from the entries that readers find, with the records within records on a stack of
// its own, so that the depth of the input is not that of the call stack.
//
// The outermost record or sequence gets its entries one by one, because they stay when reading
// fails. All others are built at once when they are complete and their shape is known; until then
// their values wait on stacks, one a kind. A record for which there is no transition any more is
// built from what waits, and gets the rest entry by entry as well.
class TreeBuilder {
public:
    // A record or sequence that is not complete.
    struct Frame {
        bool isSequence = false;
        // False: the values are on the stacks, and the shape knows their names.
        bool isBuilt = false;
        // Of a sequence: the shape of the record that it is in.
        std::uint32_t shape = 0;
        // The prediction: the shape after the next entry, 0 for none.
        std::uint32_t expected = 0;
        std::uint32_t reals = 0;
        Record record;
        Sequence sequence;
    };

    // One of the two is null.
    TreeBuilder(Record* record, Sequence* sequence);

    bool isOutermost() const { return m_frames.size() == 1; }
    const Frame& innermost() const { return m_frames.back(); }
    ShapeTree::Shape& shape(std::uint32_t number) { return m_shapes[number]; }

    // Opens a record within the innermost sequence.
    void openRecord();
    // Ends the innermost frame. True if it was the outermost, which stays.
    bool close();

    // An entry of the innermost record; its shape is found by name and type.
    void store(const std::string& name, std::string_view text);
    void store(const std::string& name, const Number& number);
    void openEntry(const std::string& name, Type type);

    // The entry that the prediction foretells. The caller has compared its name and type.
    void storeExpected(std::string_view text)
    {
        m_texts.emplace_back(text);
        enter(innermost().expected);
    }
    void storeExpected(const Number& number)
    {
        pushNumber(m_shapes[innermost().expected].cell, number);
        enter(innermost().expected);
    }
    void openExpected(Type type)
    {
        enter(innermost().expected);
        openNested(type);
    }

private:
    // The frame around the innermost one.
    const Frame& outer() const { return m_frames[m_frames.size() - 2]; }
    Record& recordOf(Frame& frame) { return isOutermost() ? *m_record : frame.record; }
    Sequence& sequenceOf(Frame& frame) { return isOutermost() ? *m_sequence : frame.sequence; }

    void openNested(Type type);
    bool tryTransition(const std::string& name, Type type);
    void enter(std::uint32_t shape);
    void pushNumber(std::uint32_t cell, const Number& number);
    void deliver(Record record, bool isBuilt);
    void deliver(Sequence sequence);
    Record build(const Frame& frame);
    void buildValue(Cell* cell, Type type);

    Record* m_record;
    Sequence* m_sequence;

    std::vector<Frame> m_frames;
    // The values of all frames that are not built yet, by kind.
    std::vector<Cell> m_numbers;
    std::vector<std::string> m_texts;
    std::vector<Record> m_records;
    std::vector<Sequence> m_sequences;
    // The names of the entries of built frames whose nested value is being read.
    std::vector<std::string> m_outerNames;
    ShapeTree m_shapes;
    Arena m_arena;
};

inline void TreeBuilder::openRecord()
{
    const std::uint32_t outer = innermost().shape;
    m_frames.emplace_back().expected = m_shapes[outer].nestedFirst;
}

inline void TreeBuilder::openNested(Type type)
{
    if (type == Type::Record) {
        openRecord();
        return;
    }
    const std::uint32_t outer = innermost().shape;
    Frame& nested = m_frames.emplace_back();
    nested.isSequence = true;
    nested.shape = outer;
}

// Notes where the innermost record went, as a prediction for the next one. The frame around it is
// that of a record whose entry it is, or of a sequence.
inline void TreeBuilder::enter(std::uint32_t shape)
{
    Frame& frame = m_frames.back();
    if (frame.shape == 0)
        m_shapes[outer().shape].nestedFirst = shape;
    m_shapes[frame.shape].next = shape;
    frame.shape = shape;
    frame.expected = m_shapes[shape].next;
}

inline void TreeBuilder::pushNumber(std::uint32_t cell, const Number& number)
{
    Cell value;
    if (number.isReal) {
        m_frames.back().reals |= RecordData::realFlag(cell);
        std::memcpy(value.bytes, &number.real, sizeof number.real);
    } else {
        std::memcpy(value.bytes, &number.decimal, sizeof number.decimal);
    }
    m_numbers.push_back(value);
}

}
