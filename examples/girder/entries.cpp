#include "entries.h"

#include "number_text.h"
#include "remark_text.h"

#include <mdtools/formula_interpreter.h>

#include <algorithm>
#include <cmath>

namespace Girder {

namespace {

using Tools::Smart::Type;

std::string describe(Type type)
{
    switch (type) {
    case Type::Text:
        return "a quoted text";
    case Type::Decimal:
        return "a whole number";
    case Type::Real:
        return "a number";
    case Type::Sequence:
        return "a list in brackets";
    default:
        return "a record in parentheses";
    }
}

}

Entries::Entries(const Tools::Smart::Record& record, const std::string& path, Remarks& remarks)
    : m_record(record), m_path(path), m_remarks(remarks)
{}

// Whoever asks for a name knows it: reportUnknown() finds those that nobody has asked for.
bool Entries::has(const std::string& name)
{
    m_known.push_back(name);
    return m_record.exists(name);
}

bool Entries::isThere(const std::string& name, Type type)
{
    if (!has(name)) {
        error(name, "is missing");
        return false;
    }
    if (!m_record.exists(type, name)) {
        error(name, "must be " + describe(type) + ", but is " + describe(m_record.typeOf(name)));
        return false;
    }
    return true;
}

std::string Entries::text(const std::string& name)
{
    return isThere(name, Type::Text) ? m_record.getText(name) : "";
}

// A text is a formula, anything else has to be a number. The value is left alone after a fault.
bool Entries::readNumber(const std::string& name, double& value)
{
    double read = 0.0;
    if (m_record.existsText(name)) {
        if (!readFormula(name, read))
            return false;
    } else if (isThere(name, Type::Real)) {
        read = m_record.getReal(name);
    } else {
        return false;
    }
    if (!std::isfinite(read)) {
        error(name, "is too large a number");
        return false;
    }
    value = read;
    return true;
}

bool Entries::readFormula(const std::string& name, double& value)
{
    has(name);
    const std::string& text = m_record.getText(name);
    const auto result = Tools::FormulaInterpreter::tryEvaluate(text);
    if (text.empty() || !result.hasValue()) {
        error(name, "is no formula with a value: \"" + abridged(text, LongestWord) + "\"");
        return false;
    }
    value = result.getValue();
    return true;
}

double Entries::number(const std::string& name)
{
    double value = 0.0;
    readNumber(name, value);
    return value;
}

// After a fault these give a value that is harmless for whatever is checked with it later, so that
// one fault makes one remark.
double Entries::positive(const std::string& name)
{
    double value = 1.0;
    if (!readNumber(name, value) || value > 0.0)
        return value;
    error(name, "must be greater than 0, but is " + toText(value));
    return 1.0;
}

double Entries::within(const std::string& name, double length)
{
    const double value = number(name);
    if (value >= 0.0 && value <= length)
        return value;
    error(name,
          "must lie within the span, from 0 to " + toText(length) + ", but is " + toText(value));
    return 0.0;
}

int Entries::wholeNumber(const std::string& name, int minimum, int maximum)
{
    if (!isThere(name, Type::Decimal))
        return minimum;
    const int value = m_record.getDecimal(name);
    if (value >= minimum && value <= maximum)
        return value;
    error(name, "must be a whole number from " + std::to_string(minimum) + " to " +
                    std::to_string(maximum) + ", but is " + std::to_string(value));
    return minimum;
}

const Tools::Smart::Sequence* Entries::list(const std::string& name)
{
    return isThere(name, Type::Sequence) ? &m_record.getSequence(name) : nullptr;
}

void Entries::error(const std::string& name, const std::string& text)
{
    m_remarks.error(pathOf(name), text);
}

void Entries::reportUnknown()
{
    for (const auto& [name, type] : m_record) {
        if (std::find(m_known.begin(), m_known.end(), name) == m_known.end())
            error(name, "is no entry of a model");
    }
}

std::string Entries::pathOf(const std::string& name) const
{
    return m_path.empty() ? name : m_path + "." + name;
}

std::string Entries::pathOf(const std::string& name, std::size_t index) const
{
    return pathOf(name) + "[" + std::to_string(index + 1) + "]";
}

}
