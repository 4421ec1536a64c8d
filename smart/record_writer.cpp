#include "smart/record_writer.h"

#include <stdexcept>

namespace Tools::Smart {

namespace {

bool isBlank(const std::string& unit)
{
    return unit.find_first_not_of(" \t") == std::string::npos;
}

}

RecordWriter::RecordWriter(std::ostream& stream, const std::string& indentUnit)
    : m_output(stream), m_unit(isBlank(indentUnit) ? indentUnit : std::string())
{}

void RecordWriter::write(const Record& record, int level)
{
    m_level = level;
    open(record);
    run();
}

void RecordWriter::write(const Sequence& sequence, int level)
{
    m_level = level;
    open(sequence);
    run();
}

void RecordWriter::run()
{
    while (!m_frames.empty()) {
        if (writeNext(m_frames.back()))
            continue;
        const bool isRecord = m_frames.back().record != nullptr;
        m_frames.pop_back();
        writeLine(isRecord ? ")" : "]");
    }
    m_output.finish();
}

void RecordWriter::open(const Record& record)
{
    writeLine("(");
    m_frames.push_back({&record, nullptr, {0, 0}, 0});
}

void RecordWriter::open(const Sequence& sequence)
{
    writeLine("[");
    m_frames.push_back({nullptr, &sequence, {0, 0}, 0});
}

// False if there is nothing more to write within the frame.
bool RecordWriter::writeNext(Frame& frame)
{
    if (frame.sequence != nullptr) {
        const bool isThere = frame.number < frame.sequence->size();
        if (isThere)
            open((*frame.sequence)[frame.number++]);
        return isThere;
    }
    const RecordData* data = RecordData::of(*frame.record);
    const Entry* entry = data != nullptr ? data->index().at(frame.entry) : nullptr;
    if (entry == nullptr)
        return false;
    frame.entry = data->index().next(frame.entry);
    writeEntry(*data, *entry);
    return true;
}

void RecordWriter::writeEntry(const RecordData& data, const Entry& entry)
{
    indent();
    m_output.write(entry.name());
    m_output.write(" = ");
    switch (data.typeOf(entry)) {
    case Type::Text:
        m_output.write("\"");
        m_output.write(data.value<std::string>(entry));
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

void RecordWriter::writeLine(std::string_view mark)
{
    indent();
    m_output.write(mark);
    m_output.endLine();
}

// Everything within a frame stands one level below its marks.
void RecordWriter::indent()
{
    const long long level = m_level + static_cast<long long>(m_frames.size());
    if (m_unit.empty() || level <= 0)
        return;
    const std::size_t size = m_unit.size() * static_cast<std::size_t>(level);
    while (m_indent.size() < size)
        m_indent += m_unit;
    m_output.write(std::string_view(m_indent).substr(0, size));
}

}
