#pragma once

#include <mdtools/export.h>

#include <string>
#include <vector>

namespace Tools {

// A remark of some weight.
class MDTOOLS_API Record {
public:
    // The numbers are fixed. None and Detail may be recorded, but only Recorder::hasRecord() finds
    // them.
    enum Level : int { None = 0, Detail = 1, Info = 2, Warning = 3, Error = 4 };

    Record(Level level, const std::string& text);

    Level getLevel() const { return m_level; }
    const std::string& getText() const { return m_text; }

private:
    friend class Recorder;

    Level m_level;
    std::string m_text;
};

// Collects the remarks of an operation that has more to say than its first error, such as the check
// of an input. Belongs to one thread at a time.
class MDTOOLS_API Recorder {
public:
    // Appends; the same remark may come again. The second form leaves an empty text in `record`.
    void record(const Record& record);
    void record(Record&& record);

    // In the order in which they were recorded.
    const std::vector<Record>& getRecords() const { return m_records; }
    void clear();

    // No record at all, of whatever level.
    bool isEmpty() const { return m_records.empty(); }
    // Some record has exactly this level.
    bool hasRecord(Record::Level level) const;
    bool hasInfo() const;
    bool hasWarning() const;
    bool hasError() const;
    bool hasAnyInfoWarnError() const;

private:
    std::vector<Record> m_records;
};

}
