#include <mdtools/smart_record.h>

#include "smart/record_data.h"
#include "smart/record_reader.h"
#include "smart/record_writer.h"

#include <limits>
#include <stdexcept>
#include <utility>

namespace Tools::Smart {

namespace {

// A list node takes two links and a record.
constexpr std::size_t MaxSize =
    static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) /
    (2 * sizeof(void*) + sizeof(Record));

// How far down nested records are compared with those of the record before, to share their names.
constexpr int SharedDepth = 4;

}

Sequence::Sequence(const Sequence& other)
{
    try {
        RecordData::copy(other, *this);
    } catch (...) {
        RecordData::destroy(m_data);
        throw;
    }
}

// The other sequence may lie within this one, so this one's records go last.
Sequence& Sequence::operator=(const Sequence& other)
{
    Sequence copy(other);
    std::swap(m_data, copy.m_data);
    return *this;
}

void Sequence::destroy(SequenceData* data) noexcept
{
    RecordData::destroy(data);
}

Sequence& Sequence::push_back(const Record& record)
{
    return push_back(Record(record));
}

// Neighbours in a sequence mostly have the same shape: a record that does takes the index of the
// one before it, so that the program's own records are as small as those that are read.
Sequence& Sequence::push_back(Record&& record)
{
    const std::size_t count = size();
    if (count == MaxSize)
        throw std::length_error("list too long");
    // The record may be one of this sequence.
    Record taken(std::move(record));
    if (count > 0)
        RecordData::shareIndex(taken, m_data->at(count - 1), SharedDepth);
    SequenceData::append(*this) = std::move(taken);
    return *this;
}

std::size_t Sequence::size() const
{
    return m_data != nullptr ? m_data->size() : 0;
}

Record* Sequence::find(std::size_t index) const
{
    return &m_data->at(index);
}

Sequence::iterator Sequence::begin()
{
    return {this, size() != 0 ? 0 : End};
}

Sequence::iterator Sequence::end()
{
    return {this, End};
}

Sequence::const_iterator Sequence::begin() const
{
    return {this, size() != 0 ? 0 : End};
}

Sequence::const_iterator Sequence::end() const
{
    return {this, End};
}

Record& Sequence::operator[](std::size_t index)
{
    if (index >= size())
        throw std::out_of_range("Sequence::operator[](size_t index)");
    return m_data->at(index);
}

const Record& Sequence::operator[](std::size_t index) const
{
    if (index >= size())
        throw std::out_of_range("Sequence::operator[](int index)");
    return m_data->at(index);
}

void Sequence::readFrom(std::istream& stream)
{
    IstreamTokenIterator tokens(stream);
    readFrom(tokens);
}

void Sequence::readFrom(IstreamTokenIterator& tokens)
{
    RecordReader::read(tokens, *this);
}

void Sequence::writeTo(std::ostream& stream, int level, const std::string& indentUnit) const
{
    writeTree(*this, stream, level, indentUnit);
}

}
