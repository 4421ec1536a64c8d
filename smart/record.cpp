#include <mdtools/smart_record.h>

#include "smart/record_data.h"
#include "smart/record_reader.h"
#include "smart/record_writer.h"

#include <utility>

namespace Tools::Smart {

namespace {

// A record without entries has no data.
const Entry* findEntry(const RecordData* data, std::string_view name)
{
    return data != nullptr ? data->index().find(name) : nullptr;
}

const Entry& getEntry(const RecordData* data, std::string_view name)
{
    const Entry* entry = findEntry(data, name);
    if (entry == nullptr)
        throw NotAvailable(std::string(name));
    return *entry;
}

// The wanted type is that of `T`; numbers take another way where a decimal serves as a real.
template <class T>
T& getValue(const RecordData* data, std::string_view name, Type wanted)
{
    const Entry& entry = getEntry(data, name);
    if (data->typeOf(entry) != wanted)
        throw WrongType(std::string(name), wanted, data->typeOf(entry));
    return data->value<T>(entry);
}

// Only quotes: the format has no escape for the backslash itself.
std::string withEscapedQuotes(const std::string& text)
{
    std::string result;
    result.reserve(text.size() + 8);
    for (const char c : text) {
        if (c == '"')
            result += '\\';
        result += c;
    }
    return result;
}

}

// Whatever fails, the part that was copied is whole (see RecordData::copy) and can be destroyed.
Record::Record(const Record& other)
{
    try {
        RecordData::copy(other, *this);
    } catch (...) {
        RecordData::destroy(m_data);
        throw;
    }
}

// The other record may lie within this one, so this one's content goes last.
Record& Record::operator=(const Record& other)
{
    Record copy(other);
    std::swap(m_data, copy.m_data);
    return *this;
}

void Record::destroy(RecordData* data) noexcept
{
    RecordData::destroy(data);
}

bool Record::exists(std::string_view name) const
{
    return findEntry(m_data, name) != nullptr;
}

bool Record::exists(Type type, std::string_view name) const
{
    const Entry* entry = findEntry(m_data, name);
    if (entry == nullptr)
        return false;
    const Type actual = m_data->typeOf(*entry);
    return actual == type || (type == Type::Real && actual == Type::Decimal);
}

bool Record::existsText(std::string_view name) const
{
    return exists(Type::Text, name);
}

bool Record::existsDecimal(std::string_view name) const
{
    return exists(Type::Decimal, name);
}

bool Record::existsReal(std::string_view name) const
{
    return exists(Type::Real, name);
}

bool Record::existsRecord(std::string_view name) const
{
    return exists(Type::Record, name);
}

bool Record::existsSequence(std::string_view name) const
{
    return exists(Type::Sequence, name);
}

Type Record::typeOf(std::string_view name) const
{
    return m_data->typeOf(getEntry(m_data, name));
}

const std::string& Record::getText(std::string_view name) const
{
    return getValue<std::string>(m_data, name, Type::Text);
}

int Record::getDecimal(std::string_view name) const
{
    return getValue<int>(m_data, name, Type::Decimal);
}

// A real without fraction is written, and read back, as a decimal.
double Record::getReal(std::string_view name) const
{
    const Entry& entry = getEntry(m_data, name);
    if (m_data->typeOf(entry) == Type::Decimal)
        return m_data->value<int>(entry);
    return getValue<double>(m_data, name, Type::Real);
}

const Record& Record::getRecord(std::string_view name) const
{
    return getValue<Record>(m_data, name, Type::Record);
}

const Sequence& Record::getSequence(std::string_view name) const
{
    return getValue<Sequence>(m_data, name, Type::Sequence);
}

Record& Record::setText(std::string_view name, std::string text, bool escapeQuotes)
{
    if (escapeQuotes && text.find('"') != std::string::npos)
        text = withEscapedQuotes(text);
    RecordData::provide<std::string>(*this, name, Type::Text) = std::move(text);
    return *this;
}

Record& Record::setDecimal(std::string_view name, int value)
{
    RecordData::provide<int>(*this, name, Type::Decimal) = value;
    return *this;
}

Record& Record::setReal(std::string_view name, double value)
{
    RecordData::provide<double>(*this, name, Type::Real) = value;
    return *this;
}

Record& Record::setRecord(std::string_view name, Record record)
{
    RecordData::provide<Record>(*this, name, Type::Record) = std::move(record);
    return *this;
}

Record& Record::setSequence(std::string_view name, Sequence sequence)
{
    RecordData::provide<Sequence>(*this, name, Type::Sequence) = std::move(sequence);
    return *this;
}

Record& Record::erase(std::string_view name)
{
    getEntry(m_data, name);
    RecordData::erase(*this, name);
    return *this;
}

std::string& Record::operator[](const Property<Text>& property)
{
    auto& text = RecordData::provide<std::string>(*this, property.getName(), Type::Text);
    text.clear();
    return text;
}

int& Record::operator[](const Property<Decimal>& property)
{
    return RecordData::provide<int>(*this, property.getName(), Type::Decimal) = 0;
}

double& Record::operator[](const Property<Real>& property)
{
    return RecordData::provide<double>(*this, property.getName(), Type::Real) = 0.0;
}

Record& Record::operator[](const Property<Record>& property)
{
    return RecordData::provide<Record>(*this, property.getName(), Type::Record) = Record();
}

Sequence& Record::operator[](const Property<Sequence>& property)
{
    return RecordData::provide<Sequence>(*this, property.getName(), Type::Sequence) = Sequence();
}

const std::string& Record::operator[](const Property<Text>& property) const
{
    return getText(property.getName());
}

int Record::operator[](const Property<Decimal>& property) const
{
    return getDecimal(property.getName());
}

double Record::operator[](const Property<Real>& property) const
{
    return getReal(property.getName());
}

const Record& Record::operator[](const Property<Record>& property) const
{
    return getRecord(property.getName());
}

const Sequence& Record::operator[](const Property<Sequence>& property) const
{
    return getSequence(property.getName());
}

Record::Iterator Record::begin() const
{
    Iterator first(this);
    first.settle(0, 0);
    return first;
}

Record::Iterator Record::end() const
{
    return Iterator(this);
}

void Record::readFrom(std::istream& stream)
{
    IstreamTokenIterator tokens(stream);
    readFrom(tokens);
}

void Record::readFrom(IstreamTokenIterator& tokens)
{
    RecordReader::read(tokens, *this);
}

void Record::writeTo(std::ostream& stream, int level, const std::string& indentUnit) const
{
    writeTree(*this, stream, level, indentUnit);
}

}
