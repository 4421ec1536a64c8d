#pragma once

#include "platform/trigonometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include <emmintrin.h>

namespace MdToolsTest {

// The processor's own root, rounded once. MinGW's function, which unoptimised code calls, rounds
// twice.
inline double root(double x)
{
    return _mm_cvtsd_f64(_mm_sqrt_sd(_mm_setzero_pd(), _mm_set_sd(x)));
}

// The rules of formulas word by word, in the way they are described: with recursion, and by writing
// flipped signs into the text. Slow, and no match for deep nesting. Counts with diameters are left
// out.
class FormulaReference {
public:
    explicit FormulaReference(const std::string& text)
    {
        for (const char c : text)
            m_given += c == ',' ? '.' : c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
        m_text = m_given;
        if (text.empty())
            return;
        const Part part = evaluate();
        m_value = part.value;
        m_isValid = m_isValid && part.hasValue;
    }

    double value() const { return m_value; }
    bool isValid() const { return m_isValid; }

private:
    struct Part {
        double value;
        bool hasValue;
    };

    static constexpr double Pi = 3.14159265358979323846;

    char at(std::size_t i) const { return i < m_text.size() ? m_text[i] : '\0'; }
    static bool isDigit(char c) { return c >= '0' && c <= '9'; }
    static double radians(double degrees) { return degrees * (Pi / 180.0); }

    Part evaluate()
    {
        Part r{0.0, false};
        char p = '+';
        double x = 0.0;
        const auto apply = [&](double v, bool hasValue) {
            if (p == '+') {
                r = {r.value + v, r.hasValue || hasValue};
            } else if (p == '*') {
                r = {v * r.value, true};
            } else if (v == 0.0) {
                m_isValid = false;
                r = {std::numeric_limits<double>::max(), true};
            } else {
                r = {r.value / v, true};
            }
        };
        while (m_cursor < m_text.size()) {
            const char c = at(m_cursor);
            if (c == ')')
                return r;
            if (c == ' ') {
                ++m_cursor;
            } else if (c == '(') {
                ++m_cursor;
                const Part inner = evaluate();
                x += inner.value;
                apply(x, inner.hasValue);
                skipClosing();
            } else if (c == '+') {
                ++m_cursor;
                const Part rest = evaluate();
                r = {r.value + rest.value, r.hasValue || rest.hasValue};
            } else if (c == '-') {
                ++m_cursor;
                flipSigns();
                const Part rest = evaluate();
                r = {r.value - rest.value, r.hasValue || rest.hasValue};
            } else if (c == '*' || c == '/') {
                ++m_cursor;
                p = c;
            } else if (skipName("sqrt")) {
                x += evaluate().value;
                skipClosing();
                if (x < 0.0)
                    return {0.0, true};
                apply(root(x), true);
            } else if (callFunction(x)) {
                apply(x, true);
            } else if (skipName("pi")) {
                apply(Pi, true);
            } else if (isDigit(c) || (c == '.' && isDigit(at(m_cursor + 1)))) {
                x = readNumber();
                apply(x, true);
            } else if (c == '.' && m_cursor + 1 == m_text.size()) {
                ++m_cursor;
                apply(0.0, true);
            } else if (c == '.') {
                for (std::size_t i = m_cursor; i < m_text.size(); ++i)
                    m_text[i] = m_text[i] == ' ' || m_text[i] == '\t' ? '0' : m_text[i];
                x = readNumber();
                apply(x, true);
                m_cursor += m_cursor < m_text.size() ? 1 : 0;
            } else {
                if (m_text.substr(m_cursor) != m_given.substr(m_cursor))
                    m_isValid = false;
                return r;
            }
        }
        return r;
    }

    bool callFunction(double& x)
    {
        struct Function {
            const char* name;
            double (*call)(double);
        };
        static const Function functions[] = {
            {"asin", [](double a) { return std::asin(a); }},
            {"sin", [](double a) { return Tools::Platform::sine(radians(a)); }},
            {"acos", [](double a) { return std::acos(a); }},
            {"cos", [](double a) { return Tools::Platform::cosine(radians(a)); }},
            {"atan", [](double a) { return std::atan(a); }},
            {"tan", [](double a) { return Tools::Platform::tangent(radians(a)); }},
        };
        for (const Function& function : functions) {
            if (skipName(function.name)) {
                x = function.call(evaluate().value);
                skipClosing();
                return true;
            }
        }
        return false;
    }

    bool skipName(const std::string& name)
    {
        if (m_text.compare(m_cursor, name.size(), name) != 0)
            return false;
        m_cursor = std::min(m_text.find_first_not_of(name + " ", m_cursor), m_text.size());
        m_cursor = std::min(m_text.find_first_not_of('(', m_cursor), m_text.size());
        return true;
    }

    void skipClosing() { m_cursor += at(m_cursor) == ')' ? 1 : 0; }

    double readNumber()
    {
        const char* const begin = m_text.c_str() + m_cursor;
        char* end = nullptr;
        const double value = std::strtod(begin, &end);
        m_cursor += static_cast<std::size_t>(end - begin);
        return value;
    }

    void flipSigns()
    {
        int depth = 0;
        for (std::size_t i = m_cursor; i < m_text.size(); ++i) {
            char& c = m_text[i];
            depth += c == '(' ? 1 : c == ')' ? -1 : 0;
            if (depth < 0)
                return;
            if (c == 'e') {
                while (i + 1 < m_text.size() && !isDigit(at(i + 1)))
                    ++i;
            } else if (depth == 0 && (c == '+' || c == '-')) {
                c = c == '+' ? '-' : '+';
            }
        }
    }

    std::string m_given;
    std::string m_text;
    std::size_t m_cursor = 0;
    double m_value = 0.0;
    bool m_isValid = true;
};

}
