#include <mdtools/formula_interpreter.h>

#include <mdtools/strings.h>

#include "formula/evaluator.h"
#include "text/numbers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string_view>

namespace Tools {

namespace {

// Texts of this length are evaluated without allocation.
constexpr std::size_t InlineSize = 64;

// The parts of a text between blanks and the letter D. More than two are not counted.
struct Parts {
    std::string_view parts[2];
    std::size_t count = 0;
};

Parts splitAtDiameter(std::string_view text)
{
    constexpr std::string_view Delimiters = " dD";
    Parts result;
    std::size_t end = 0;
    while (result.count <= 2) {
        const std::size_t begin = text.find_first_not_of(Delimiters, end);
        if (begin == std::string_view::npos)
            break;
        end = std::min(text.find_first_of(Delimiters, begin), text.size());
        if (result.count < 2)
            result.parts[result.count] = text.substr(begin, end - begin);
        ++result.count;
    }
    return result;
}

// The area of bars by their count and diameter; false if the text has another shape. Both parts go
// up to a delimiter or the text's terminator, so that reading a whole number stops there.
bool readBars(std::string_view text, double pi, double& area)
{
    const Parts split = splitAtDiameter(text);
    const auto& [first, second] = split.parts;
    if (split.count == 2 && isDigit(first.back()) && isDigit(second.front())) {
        const double diameter = atoi(second.data());
        area = atoi(first.data()) * diameter * diameter * pi / 400.0;
        return true;
    }
    if (split.count == 1 && (text.front() == 'd' || text.front() == 'D')) {
        const double diameter = Numbers::readReal(first.data(), first.data() + first.size()).value;
        area = diameter * diameter * pi / 400.0;
        return true;
    }
    return false;
}

}

FormulaInterpreter::FormulaInterpreter() : m_pi(4.0 * std::atan(1.0)) {}

double FormulaInterpreter::value(const std::string& text) const
{
    return value(text.c_str());
}

double FormulaInterpreter::value(const char* text) const
{
    m_isValid = text != nullptr;
    return m_isValid ? evaluateText(text, std::strlen(text)) : 0.0;
}

mdt::Nullable<double> FormulaInterpreter::tryValue(const std::string& text) const
{
    const double result = value(text);
    return m_isValid ? mdt::Nullable<double>(result) : mdt::Nullable<double>();
}

double FormulaInterpreter::evaluate(const std::string& text)
{
    return FormulaInterpreter().value(text);
}

double FormulaInterpreter::evaluate(const char* text)
{
    return FormulaInterpreter().value(text);
}

mdt::Nullable<double> FormulaInterpreter::tryEvaluate(const std::string& text)
{
    return FormulaInterpreter().tryValue(text);
}

// Evaluation works on a copy, normalized while it is made, and changes signs in it.
double FormulaInterpreter::evaluateText(const char* text, std::size_t size) const
{
    if (size == 0)
        return 0.0;
    char buffer[InlineSize + 1];
    std::unique_ptr<char[]> memory;
    char* copy = buffer;
    if (size > InlineSize) {
        memory = std::make_unique_for_overwrite<char[]>(size + 1);
        copy = memory.get();
    }
    bool hasDiameter = false;
    for (std::size_t i = 0; i < size; ++i) {
        copy[i] = normalizeFormulaCharacter(text[i]);
        hasDiameter |= copy[i] == 'd';
    }
    copy[size] = '\0';

    double area = 0.0;
    if (hasDiameter && readBars(std::string_view(text, size), m_pi, area))
        return area;
    FormulaEvaluator evaluator(copy, size, text, m_pi);
    const FormulaValue result = evaluator.evaluate();
    m_isValid = evaluator.isValid() && result.hasValue;
    return result.value;
}

}
