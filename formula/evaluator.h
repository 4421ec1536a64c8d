#pragma once

#include "formula/sign_flips.h"
#include "formula/small_stack.h"

#include <cstddef>
#include <string_view>

namespace Tools {

// The value of a formula or of a part of it. A part without any number has none.
struct FormulaValue {
    double value = 0.0;
    bool hasValue = false;
};

// Lower case, and "," as ".": the form in which a formula is evaluated.
constexpr char normalizeFormulaCharacter(char character)
{
    if (character >= 'A' && character <= 'Z')
        return static_cast<char>(character + ('a' - 'A'));
    return character == ',' ? '.' : character;
}

// Reads one formula from left to right in one pass: a recursive descent with an explicit stack.
// Parts in parentheses, after a sign or after a function are read before what precedes them goes
// on; the levels that wait are on that stack, because there may be millions of them.
class FormulaEvaluator {
public:
    // `text` is normalized, ends with a terminator and is changed; `original` has the characters
    // that it was made of.
    FormulaEvaluator(char* text, std::size_t size, const char* original, double pi);

    FormulaValue evaluate();

    bool isValid() const { return m_isValid; }

private:
    enum class Opener : unsigned char {
        Parenthesis,
        Plus,
        Minus,
        Sqrt,
        Asin,
        Sin,
        Acos,
        Cos,
        Atan,
        Tan
    };
    struct Function {
        std::string_view name;
        // What is skipped after the name: its own characters and blanks.
        std::string_view set;
        Opener opener;
    };
    static const Function Functions[];

    // Without initial values, because a stack of them is set up for every formula.
    struct Level {
        double result;
        double operand;
        char operation;
        bool hasValue;
        // What opened the level above this one.
        Opener opener;
    };
    static constexpr Level NewLevel{0.0, 0.0, '+', false, Opener::Parenthesis};

    void open(Opener opener);
    bool close();
    bool take(FormulaValue inner);
    void apply(double operand, bool hasValue);
    static double call(Opener function, double argument);
    bool readNumber();
    bool readShortNumber();
    void setOperand(double operand);
    void readPoint();
    bool readName();
    void skipClosing();
    void settleSigns(const char* end);
    void settleHexadecimal();
    void replaceBlanks();
    void compareRest();

    char* const m_first;
    char* const m_end;
    const char* const m_original;
    const double m_pi;
    char* m_cursor;
    Level m_level = NewLevel;
    SmallStack<Level, 64> m_levels;
    SignFlips m_flips;
    bool m_isValid = true;
    bool m_isRestCompared = false;
    bool m_areBlanksReplaced = false;
};

}
