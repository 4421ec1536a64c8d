#include "smart/record_writer.h"

#include "smart/line_output.h"
#include "smart/record_data.h"

#include <stdexcept>
#include <vector>

namespace Tools::Smart {

namespace {

// A record or sequence whose opening mark is written. The data is null if it is empty.
struct Frame {
    bool isSequence;
    const RecordData* record;
    const SequenceData* sequence;
    // The next entries of the current block of the record's index.
    const Entry* entry;
    const Entry* blockEnd;
    // The next block, or the next record of the sequence.
    std::size_t next;
};

// Writes a tree, with the records within records on a stack of its own, so that the depth of the
// tree is not that of the call stack. `Output` is one of those in line_output.h.
template <class Output>
class TreeWriter {
public:
    TreeWriter(std::ostream& stream, int level, const std::string& indentUnit)
        : m_output(stream), m_level(level)
    {
        if (indentUnit.find_first_not_of(" \t") == std::string::npos)
            m_unit = indentUnit;
    }

    template <class T>
    void write(const T& tree)
    {
        open(tree);
        while (!m_frames.empty())
            writeNext();
        m_output.finish();
    }

private:
    void writeNext();
    void open(const Record& record);
    void open(const Sequence& sequence);
    bool writeNextEntry(Frame& frame);
    bool writeNextRecord(Frame& frame);
    void writeEntry(const RecordData& data, const Entry& entry);
    void writeMark(std::string_view mark);
    void indent();

    Output m_output;
    // Of the outermost record or sequence.
    long long m_level;
    std::string m_unit;
    // The unit as often as it was needed so far.
    std::string m_indent;
    std::vector<Frame> m_frames;
};

// One entry, record or closing mark.
template <class Output>
void TreeWriter<Output>::writeNext()
{
    Frame& frame = m_frames.back();
    const bool isSequence = frame.isSequence;
    if (isSequence ? writeNextRecord(frame) : writeNextEntry(frame))
        return;
    m_frames.pop_back();
    writeMark(isSequence ? "]" : ")");
}

template <class Output>
void TreeWriter<Output>::open(const Record& record)
{
    writeMark("(");
    m_frames.push_back({false, RecordData::of(record), nullptr, nullptr, nullptr, 0});
}

template <class Output>
void TreeWriter<Output>::open(const Sequence& sequence)
{
    writeMark("[");
    m_frames.push_back({true, nullptr, SequenceData::of(sequence), nullptr, nullptr, 0});
}

// Both are false if there is nothing more within the frame.
template <class Output>
bool TreeWriter<Output>::writeNextRecord(Frame& frame)
{
    if (frame.sequence == nullptr || frame.next == frame.sequence->size())
        return false;
    open(frame.sequence->at(frame.next++));
    return true;
}

template <class Output>
bool TreeWriter<Output>::writeNextEntry(Frame& frame)
{
    if (frame.entry == frame.blockEnd) {
        if (frame.record == nullptr || frame.next == frame.record->index().blocks().size())
            return false;
        const Index::Block& block = frame.record->index().blocks()[frame.next++];
        frame.entry = block.data();
        frame.blockEnd = block.data() + block.size();
    }
    const Entry& entry = *frame.entry++;
    writeEntry(*frame.record, entry);
    return true;
}

template <class Output>
void TreeWriter<Output>::writeEntry(const RecordData& data, const Entry& entry)
{
    indent();
    m_output.write(entry.name());
    m_output.write(" = ");
    switch (data.typeOf(entry)) {
    case Type::Text:
        m_output.write("\"");
        m_output.write(std::string_view(data.value<std::string>(entry)));
        m_output.write("\"");
        m_output.endLine();
        break;
    case Type::Decimal:
        m_output.write(data.value<int>(entry));
        m_output.endLine();
        break;
    case Type::Real:
        m_output.write(data.value<double>(entry));
        m_output.endLine();
        break;
    case Type::Sequence:
        m_output.endLine();
        open(data.value<Sequence>(entry));
        break;
    case Type::Record:
        m_output.endLine();
        open(data.value<Record>(entry));
        break;
    default:
        throw std::logic_error("logic_error: Record::writeTo(...) - wrong type");
    }
}

template <class Output>
void TreeWriter<Output>::writeMark(std::string_view mark)
{
    indent();
    m_output.write(mark);
    m_output.endLine();
}

// Everything within a frame is one level further in than its marks.
template <class Output>
void TreeWriter<Output>::indent()
{
    const long long level = m_level + static_cast<long long>(m_frames.size());
    if (m_unit.empty() || level <= 0)
        return;
    const std::size_t size = m_unit.size() * static_cast<std::size_t>(level);
    while (m_indent.size() < size)
        m_indent += m_unit;
    std::string_view units = std::string_view(m_indent).substr(0, size);
    if (m_frames.empty()) {
        // A width that the stream was given pads the first unit alone.
        m_output.write(units.substr(0, m_unit.size()));
        units.remove_prefix(m_unit.size());
    }
    m_output.write(units);
}

template <class T>
void write(const T& tree, std::ostream& stream, int level, const std::string& indentUnit)
{
    if (PlainOutput::serves(stream))
        TreeWriter<PlainOutput>(stream, level, indentUnit).write(tree);
    else
        TreeWriter<StreamOutput>(stream, level, indentUnit).write(tree);
}

}

void writeTree(const Record& record, std::ostream& stream, int level, const std::string& indentUnit)
{
    write(record, stream, level, indentUnit);
}

void writeTree(const Sequence& sequence, std::ostream& stream, int level,
               const std::string& indentUnit)
{
    write(sequence, stream, level, indentUnit);
}

}
