#include <mdtools/recorder.h>

#include <algorithm>
#include <utility>

namespace Tools {

Record::Record(Level level, const std::string& text) : m_level(level), m_text(text) {}

void Recorder::record(const Record& record)
{
    m_records.push_back(record);
}

void Recorder::record(Record&& record)
{
    // By way of a record of its own: the argument may be one of this recorder's.
    Record taken(record.m_level, std::string());
    taken.m_text.swap(record.m_text);
    m_records.push_back(std::move(taken));
}

void Recorder::clear()
{
    m_records.clear();
}

bool Recorder::hasRecord(Record::Level level) const
{
    return std::any_of(m_records.begin(), m_records.end(),
                       [level](const Record& record) { return record.getLevel() == level; });
}

bool Recorder::hasInfo() const
{
    return hasRecord(Record::Info);
}

bool Recorder::hasWarning() const
{
    return hasRecord(Record::Warning);
}

bool Recorder::hasError() const
{
    return hasRecord(Record::Error);
}

bool Recorder::hasAnyInfoWarnError() const
{
    return hasInfo() || hasWarning() || hasError();
}

}
