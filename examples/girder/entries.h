#pragma once

#include "remarks.h"

#include <mdtools/smart_record.h>

#include <string>
#include <vector>

namespace Girder {

// The entries of one record of a model file, taken out with checks. What is missing or wrong
// becomes a remark that names the entry, and a harmless value stands in for it. Once all entries
// were asked for, reportUnknown() names those that nobody wanted. Refers to record and remarks.
class Entries {
public:
    // `path` is where the record is in the file, empty for the whole.
    Entries(const Tools::Smart::Record& record, const std::string& path, Remarks& remarks);

    std::string text(const std::string& name);
    // Numbers may also be formulas in quoted text.
    double number(const std::string& name);
    double positive(const std::string& name);
    // From 0 to the length of a span.
    double within(const std::string& name, double length);
    int wholeNumber(const std::string& name, int minimum, int maximum);

    bool isList(const std::string& name) const { return m_record.existsSequence(name); }
    // Null if the entry is missing or no list.
    const Tools::Smart::Sequence* list(const std::string& name);

    // For entries that may be left out.
    bool has(const std::string& name);

    void error(const std::string& name, const std::string& text);
    void reportUnknown();

    std::string pathOf(const std::string& name) const;
    std::string pathOf(const std::string& name, std::size_t index) const;

private:
    bool isThere(const std::string& name, Tools::Smart::Type type);
    // False, after a remark, if there is no number that can be computed with.
    bool readNumber(const std::string& name, double& value);
    bool readFormula(const std::string& name, double& value);

    const Tools::Smart::Record& m_record;
    std::string m_path;
    Remarks& m_remarks;
    std::vector<std::string> m_known;
};

}
