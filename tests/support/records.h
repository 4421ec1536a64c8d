#pragma once

#include <mdtools/smart_record.h>

#include <iomanip>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

// Records as text, for the tests of records.
namespace MdToolsTest {

using Tools::Smart::Record;
using Tools::Smart::Sequence;
using Tools::Smart::Type;

inline std::string written(const Record& record, const std::string& unit = "  ", int level = 0)
{
    std::ostringstream stream;
    record.writeTo(stream, level, unit);
    return stream.str();
}

// The whole tree in one line, however the writer would write it. Not for deep trees.
inline std::string dump(const Record& record);

inline std::string dump(const Sequence& sequence)
{
    std::string text = "[";
    for (const Record& record : sequence)
        text += dump(record);
    return text + "]";
}

inline std::string dump(const Record& record)
{
    std::ostringstream text;
    text << "(" << std::setprecision(17);
    for (const auto& [name, type] : record) {
        text << name << ":";
        if (type == Type::Text)
            text << "'" << record.getText(name) << "'";
        else if (type == Type::Decimal)
            text << record.getDecimal(name);
        else if (type == Type::Real)
            text << "r" << record.getReal(name);
        else if (type == Type::Sequence)
            text << dump(record.getSequence(name));
        else
            text << dump(record.getRecord(name));
        text << " ";
    }
    return text.str() + ")";
}

inline Record parsed(const std::string& input)
{
    std::istringstream stream(input);
    Record record;
    record.readFrom(stream);
    return record;
}

template <class Exception, class Function>
std::string messageOf(Function function)
{
    try {
        function();
    } catch (const Exception& e) {
        return e.what();
    }
    return "nothing thrown";
}

// A record as text, mostly well-formed, of few or many names.
inline std::string randomText(std::mt19937& random, int depth, unsigned names)
{
    static const char* const values[] = {"1",
                                         "2.5",
                                         "-3e2",
                                         "12345678.9",
                                         "\"t\"",
                                         "\"a\" \"b\"",
                                         "\"a\\nb\"",
                                         "\"a\" # comment\n \"b\"",
                                         "\"a text, not stored in place\""};
    static const char* const wrong[] = {"1x", ")", "(", "]", "=", "\"", "word", "\\"};
    std::string text = "(";
    for (auto n = random() % 6; n > 0; --n) {
        text += "n" + std::to_string(random() % names) + (random() % 2 == 0 ? "=" : " = ");
        const auto kind = random() % 8;
        if (kind == 0 && depth > 0) {
            text += randomText(random, depth - 1, names);
        } else if (kind == 1 && depth > 0) {
            text += "[";
            for (auto i = random() % 5; i > 0; --i)
                text += randomText(random, depth - 1, names);
            text += "]";
        } else {
            text += values[random() % std::size(values)];
        }
        text += random() % 4 == 0 ? "\n # comment\n\t" : " ";
        if (random() % 60 == 0)
            text += wrong[random() % std::size(wrong)];
    }
    return text + ")";
}

}
