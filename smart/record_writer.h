#pragma once

#include "smart/line_output.h"
#include "smart/record_data.h"

#include <mdtools/smart_record.h>

#include <string>
#include <vector>

namespace Tools::Smart {

// Writes one record or sequence. Those within it are kept on a stack of its own.
class RecordWriter {
public:
    // A unit that holds anything but blanks and tabs does not indent.
    RecordWriter(std::ostream& stream, const std::string& indentUnit);

    void write(const Record& record, int level);
    void write(const Sequence& sequence, int level);

private:
    // A record or sequence whose opening mark is written, and the next of its entries or records.
    struct Frame {
        const Record* record;
        const Sequence* sequence;
        Index::Position entry;
        std::size_t number;
    };

    void run();
    void open(const Record& record);
    void open(const Sequence& sequence);
    bool writeNext(Frame& frame);
    void writeEntry(const RecordData& data, const Entry& entry);
    void writeLine(std::string_view mark);
    void indent();

    LineOutput m_output;
    std::string m_unit;
    // The unit as often as it was needed so far.
    std::string m_indent;
    std::vector<Frame> m_frames;
    // Of the outermost record or sequence.
    long long m_level = 0;
};

}
