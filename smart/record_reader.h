#pragma once

#include "smart/lexer.h"
#include "smart/record_data.h"
#include "smart/structures.h"

#include <mdtools/smart_record.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Tools::Smart {

// Reads one record or sequence from an iterator, which stands on its opening mark, and leaves the
// iterator on the last token that was read. Records within records are kept on a stack of its own.
//
// The outermost record or sequence gets its entries one by one, because they stay when reading
// fails. All others are built at once when they are complete (see Structures); until then their
// values wait on stacks. A record for which Structures has no step any more is built entry by entry
// as well.
class RecordReader {
public:
    explicit RecordReader(IstreamTokenIterator& iterator) : m_iterator(iterator) {}

    // Both throw WrongToken.
    void read(Record& record);
    void read(Sequence& sequence);

private:
    // A record or sequence that is not complete.
    struct Frame {
        bool isSequence = false;
        // False: the values are on the stacks and `node` tells their names.
        bool isBuilt = false;
        std::uint32_t node = 0;
        std::uint32_t expected = 0;
        std::uint32_t reals = 0;
        Record record;
        Sequence sequence;
    };

    void run(Token::Type opening);
    void readAll();
    bool readEntry(Frame& frame);
    void readValue(Frame& frame);
    void storeText(Frame& frame);
    template <class T>
    void store(Frame& frame, Type type, T value);
    void openNested(Frame& frame, Type type);
    void openRecord();
    bool close();
    void deliver(Record record, bool isBuilt);
    void deliver(Sequence sequence);

    void advance() { m_lexer->next(); }
    bool hasEnded() const { return m_iterator.m_end || m_lexer->hasEnded(); }
    bool step(Frame& frame, Type type);
    Record build(const Frame& frame);
    void buildValue(Cell* cell, Type type);
    Record& recordOf(Frame& frame) { return isOutermost(frame) ? *m_record : frame.record; }
    Sequence& sequenceOf(Frame& frame) { return isOutermost(frame) ? *m_sequence : frame.sequence; }
    bool isOutermost(const Frame& frame) const { return &frame == m_frames.data(); }
    [[noreturn]] void fail(Token::Type wanted);

    IstreamTokenIterator& m_iterator;
    Lexer* m_lexer = nullptr;
    Record* m_record = nullptr;
    Sequence* m_sequence = nullptr;

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
};

}
