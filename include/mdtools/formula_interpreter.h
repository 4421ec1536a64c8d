#pragma once

#include <mdtools/export.h>
#include <mdtools/nullable.h>

#include <cstddef>
#include <string>

namespace Tools {

// Evaluates a short arithmetic text as users type it: numbers with "." or ",", + - * /,
// parentheses, pi, and the functions sqrt, sin, cos, tan (of degrees) and asin, acos, atan (in
// radians), in upper or lower case. The text is read from left to right by rules of its own, which
// stored inputs rely on; they differ from school arithmetic:
// - The value of a parenthesis is added to the number before it, and then the operator is applied:
//   2*(3) is 2 and then times 2+3, 10. The argument of sqrt is treated alike: 2*sqrt(9) is two
//   times the root of 2+9. All other functions start afresh.
// - An operator stays in force until the next one: "2*3 4" is 24. Numbers are added at first.
// - "-" turns round the signs after it, up to the end of its parenthesis, and subtracts what they
//   give: 2-3+4 is 3. Right after "*" or "/" it is no sign of a number but ends the product: 2*-3
//   is 2-3.
// - ")" without a "(" ends the text. A parenthesis that is not closed ends with the text. A
//   function takes all "(" after its name and one ")".
// - The root of a negative number is 0 and ends the parenthesis that it is in.
// - A character without meaning ends the text as well, and what was read so far counts.
// - After a "." that no digit follows, all blanks count as 0, and the character after this number
//   is passed over.
//
// "4d12" and "4 D 12", a count and a whole diameter in millimetres, are the area of 4 bars in
// square centimetres, 4*12*12*pi/400; "d12.7" is that of one bar, whose diameter may have decimals
// after a ".".
//
// The text is invalid if it is null, divides by zero (the quotient is then the greatest double),
// has no value at all ("abc", "()"), or ends early at a character without meaning after which a
// "-" or a "." would have changed something. An empty text is 0.
//
// All that has a meaning is ASCII; bytes of other characters have none. The text ends at its first
// NUL. No text is too long or nested too deeply; those of up to 64 characters are evaluated
// without allocating memory. The result does not depend on the locale. One object serves one
// thread at a time, although its functions are const: it keeps whether the last text was valid.
// The static functions may be called by any thread.
class MDTOOLS_API FormulaInterpreter {
public:
    FormulaInterpreter();
    ~FormulaInterpreter() = default;
    FormulaInterpreter(const FormulaInterpreter& other) = default;
    FormulaInterpreter& operator=(const FormulaInterpreter& other) = default;

    // What was read so far if the text is invalid; 0.0 for null.
    double value(const std::string& text) const;
    double value(const char* text) const;

    // Empty if the text is invalid.
    mdt::Nullable<double> tryValue(const std::string& text) const;

    static double evaluate(const std::string& text);
    static double evaluate(const char* text);
    static mdt::Nullable<double> tryEvaluate(const std::string& text);

private:
    double evaluateText(const char* text, std::size_t size) const;

    double m_pi;
    mutable bool m_isValid = true;
};

}
