#include "formula/evaluator.h"

#include "platform/trigonometry.h"
#include "text/decimal.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <mdmath/mdmath.h>
#include <string_view>

namespace Tools {

namespace {

bool isHexDigit(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'f');
}

char* skip(char* text, std::string_view set)
{
    while (set.find(*text) != std::string_view::npos)
        ++text;
    return text;
}

// `text` has a terminator, so that it may be shorter.
bool startsWith(const char* text, std::string_view name)
{
    return std::strncmp(text, name.data(), name.size()) == 0;
}

}

// In the order in which they are tried.
const FormulaEvaluator::Function FormulaEvaluator::Functions[] = {
    {"sqrt", "sqrt ", Opener::Sqrt}, {"asin", "asin ", Opener::Asin},
    {"sin", "sin ", Opener::Sin},    {"acos", "acos ", Opener::Acos},
    {"cos", "cos ", Opener::Cos},    {"atan", "atan ", Opener::Atan},
    {"tan", "tan ", Opener::Tan},
};

FormulaEvaluator::FormulaEvaluator(char* text, std::size_t size, const char* original, double pi)
    : m_first(text), m_end(text + size), m_original(original), m_pi(pi), m_cursor(text)
{}

// `continue` goes on within a level, `break` ends one or more of them.
FormulaValue FormulaEvaluator::evaluate()
{
    for (;;) {
        settleSigns(m_cursor + 1);
        switch (*m_cursor) {
        case ' ':
            ++m_cursor;
            continue;
        case '(':
            ++m_cursor;
            open(Opener::Parenthesis);
            continue;
        case '+':
            ++m_cursor;
            open(Opener::Plus);
            continue;
        case '-':
            ++m_cursor;
            m_flips.start(static_cast<std::size_t>(m_cursor - m_first));
            open(Opener::Minus);
            continue;
        case '*':
        case '/':
            m_level.operation = *m_cursor++;
            continue;
        case '.':
            readPoint();
            continue;
        case ')':
        case '\0':
            break;
        default:
            if (readNumber() || readName())
                continue;
            compareRest();
            break;
        }
        if (!close())
            return {m_level.result, m_level.hasValue};
    }
}

void FormulaEvaluator::open(Opener opener)
{
    m_level.opener = opener;
    m_levels.push(m_level);
    m_level = NewLevel;
}

// The way back of the descent. Ends levels, one as a rule; false if the outermost one has ended.
bool FormulaEvaluator::close()
{
    for (;;) {
        if (m_levels.isEmpty())
            return false;
        const FormulaValue inner{m_level.result, m_level.hasValue};
        m_level = m_levels.pop();
        if (take(inner))
            return true;
    }
}

// Goes on with the value of what the level had opened. False if that ends the level itself.
bool FormulaEvaluator::take(FormulaValue inner)
{
    switch (m_level.opener) {
    case Opener::Plus:
        m_level.result += inner.value;
        m_level.hasValue = m_level.hasValue || inner.hasValue;
        return true;
    case Opener::Minus:
        m_level.result -= inner.value;
        m_level.hasValue = m_level.hasValue || inner.hasValue;
        return true;
    case Opener::Parenthesis:
        skipClosing();
        m_level.operand += inner.value;
        apply(m_level.operand, inner.hasValue);
        return true;
    case Opener::Sqrt:
        skipClosing();
        m_level.operand += inner.value;
        if (m_level.operand < 0.0) {
            m_level.result = 0.0;
            m_level.hasValue = true;
            return false;
        }
        apply(std::sqrt(m_level.operand), true);
        return true;
    default:
        skipClosing();
        setOperand(call(m_level.opener, inner.value));
        return true;
    }
}

// A part without a number counts as one once it is multiplied or divided by.
void FormulaEvaluator::apply(double operand, bool hasValue)
{
    if (m_level.operation == '+') {
        m_level.result += operand;
        m_level.hasValue = m_level.hasValue || hasValue;
        return;
    }
    m_level.hasValue = true;
    if (m_level.operation == '*') {
        m_level.result *= operand;
    } else if (operand != 0.0) {
        m_level.result /= operand;
    } else {
        m_level.result = std::numeric_limits<double>::max();
        m_isValid = false;
    }
}

double FormulaEvaluator::call(Opener function, double argument)
{
    switch (function) {
    case Opener::Asin:
        return std::asin(argument);
    case Opener::Sin:
        return Platform::sine(Math::degreeToRadian(argument));
    case Opener::Acos:
        return std::acos(argument);
    case Opener::Cos:
        return Platform::cosine(Math::degreeToRadian(argument));
    case Opener::Atan:
        return std::atan(argument);
    default:
        return Platform::tangent(Math::degreeToRadian(argument));
    }
}

// False if none starts here.
bool FormulaEvaluator::readNumber()
{
    if (!isDigit(*m_cursor))
        return false;
    if (readShortNumber())
        return true;
    const bool isHexadecimal = m_cursor[0] == '0' && m_cursor[1] == 'x';
    if (isHexadecimal)
        settleHexadecimal();
    const Numbers::Real number =
        isHexadecimal ? Numbers::readReal(m_cursor, m_end) : Numbers::readDecimal(m_cursor, m_end);
    m_cursor += number.end - m_cursor;
    setOperand(number.value);
    return true;
}

// The usual ones. False for others.
bool FormulaEvaluator::readShortNumber()
{
    const Numbers::Short number(m_cursor);
    const char* const end = number.end;
    if (end == nullptr || isDigit(*end) || *end == 'e' || *end == 'x')
        return false;
    m_cursor += end - m_cursor;
    setOperand(number.isReal ? number.real : static_cast<double>(number.whole));
    return true;
}

void FormulaEvaluator::setOperand(double operand)
{
    m_level.operand = operand;
    apply(operand, true);
}

// A point at the very end is the number 0; one without a digit after it turns blanks to zeros.
void FormulaEvaluator::readPoint()
{
    const bool isLast = m_cursor + 1 == m_end;
    if (isLast) {
        ++m_cursor;
        apply(0.0, true);
        return;
    }
    const bool isOrdinary = isDigit(m_cursor[1]);
    if (!isOrdinary)
        replaceBlanks();
    const Numbers::Real number = Numbers::readDecimal(m_cursor, m_end);
    m_cursor += number.end - m_cursor;
    if (!isOrdinary && m_cursor != m_end)
        ++m_cursor;
    setOperand(number.value);
}

// A function or pi; false if there is none.
bool FormulaEvaluator::readName()
{
    for (const Function& function : Functions) {
        if (startsWith(m_cursor, function.name)) {
            m_cursor = skip(skip(m_cursor, function.set), "(");
            open(function.opener);
            return true;
        }
    }
    if (!startsWith(m_cursor, "pi"))
        return false;
    m_cursor = skip(skip(m_cursor, "pi "), "(");
    apply(m_pi, true);
    return true;
}

void FormulaEvaluator::skipClosing()
{
    if (*m_cursor == ')')
        ++m_cursor;
}

// Reading never goes further than this, so that a sign is what the flips make of it.
void FormulaEvaluator::settleSigns(const char* end)
{
    if (m_flips.isActive())
        m_flips.settle(m_first,
                       static_cast<std::size_t>(std::min<const char*>(end, m_end) - m_first));
}

// The sign of an exponent after "p" is turned round like any other. That of a decimal exponent
// never is, so that decimal numbers need not be settled.
void FormulaEvaluator::settleHexadecimal()
{
    const char* p = m_cursor + 2;
    while (isHexDigit(*p) || *p == '.')
        ++p;
    if (*p == 'p')
        settleSigns(p + 2);
}

// From here on to the end, and for the flips that start from now on. Those that are under way have
// seen the blanks.
void FormulaEvaluator::replaceBlanks()
{
    if (m_areBlanksReplaced)
        return;
    m_areBlanksReplaced = true;
    settleSigns(m_end);
    m_flips.stop();
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    std::replace_if(m_cursor, m_end, isBlank, '0');
}

// The text after a character without meaning must be what was given.
void FormulaEvaluator::compareRest()
{
    // All levels end here, but once is enough.
    if (m_isRestCompared)
        return;
    m_isRestCompared = true;
    settleSigns(m_end);
    const auto isSame = [](char a, char b) { return a == normalizeFormulaCharacter(b); };
    if (!std::equal(m_cursor, m_end, m_original + (m_cursor - m_first), isSame))
        m_isValid = false;
}

}
