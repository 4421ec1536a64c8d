#include "formula_reference.h"
#include "support/allocations.h"

#include <mdtools/formula_interpreter.h>

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>

using MdToolsTest::allocationCount;
using MdToolsTest::FormulaReference;
using Tools::FormulaInterpreter;

namespace {

constexpr double Pi = 3.14159265358979323846;

struct Case {
    const char* text;
    double value;
    bool isValid = true;
};

template <std::size_t count>
void expectValues(const Case (&cases)[count])
{
    const FormulaInterpreter interpreter;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_DOUBLE_EQ(interpreter.value(c.text), c.value);
        EXPECT_DOUBLE_EQ(FormulaInterpreter::evaluate(std::string(c.text)), c.value);
        EXPECT_EQ(interpreter.tryValue(c.text).hasValue(), c.isValid);
        EXPECT_DOUBLE_EQ(FormulaInterpreter::tryEvaluate(c.text).getValue(),
                         c.isValid ? c.value : 0.0);
    }
}

TEST(FormulaInterpreter, operators)
{
    static const Case cases[] = {
        {"2+3*4", 14},
        {"2*3+4", 10},
        {"8/2/2", 2},
        {"7", 7},
        {" 1,5 * 2 ", 3},
        {"1.5e1+2E-1", 15.2},
        {"0x10+1", 17},
        {"0x1p-1", 0.5},
        {"2*3 4", 24}, // the operator stays
        {"1 2 3", 6},
        {"2 +3", 5},
        {"*5", 0},   // nothing times 5
        {"2**3", 6}, // the last operator counts
        {"2/*3", 6},
        {"1/0", DBL_MAX, false},
        {"1/0+1", DBL_MAX, false},
        {"0/0", DBL_MAX, false},
        {"1/0*0", 0, false},
        {"1e400", HUGE_VAL},
        {"+", 0, false},
        {"*", 0, false},
    };
    expectValues(cases);
}

TEST(FormulaInterpreter, signs)
{
    static const Case cases[] = {
        {"-3", -3},
        {"+3", 3},
        {"2-3+4", 3},
        {"2-3-4", -5},
        {"-1-1-1-1", -4},
        {"2*-3", -1}, // 2-3
        {"2*+3", 5},
        {"-+3", 3},  // -(-3)
        {"--3", -3}, // -(+3)
        {"+-3", -3},
        {"1-(2-3)", 2},
        {"1-(2-3)-4", -2}, // signs in the parenthesis are its own
        {"(1-2)-3", -4},
        {"1-2e-3+1", 1.998}, // the exponent keeps its sign
        {"1-2e-3-1e+0", -0.002},
        {"10-0xe-3+1", 0}, // the leap goes from the hexadecimal "e" to the 3: 10-(14-(3+1))
        {"1-0x1p-1", -1},  // but a binary exponent is turned round: 2
        {"5-2)-1", 3},
    };
    expectValues(cases);
}

TEST(FormulaInterpreter, parentheses)
{
    static const Case cases[] = {
        {"(2+3)*4", 20},   {"2*(3)", 10},              // 2*(2+3)
        {"2*(1+2)*3", 30},                             // 2*(2+3)*3
        {"2(3)", 7},                                   // 2+(2+3)
        {"(2)(3)", 7},     {"((2))", 2},  {"(1+2", 3}, // never closed
        {"1)+5", 1},                                   // never opened
        {")", 0, false},   {"(1))*9", 1}, {"()", 0, false}, {"()5", 5}, {"3*()", 9},
    };
    expectValues(cases);
}

TEST(FormulaInterpreter, functions)
{
    static const Case cases[] = {
        {"sin(30)", 0.5},
        {"SIN(30)", 0.5},
        {"cos(60)*2", 1}, // 1 is nothing to be added: 0+0.5, times 2
        {"tan(45)", 1},
        {"tan(90)", 1.633123935319537e16}, // where pi must be known to its last bit
        {"sin(180)", 1.2246467991473532e-16},
        {"cos(3/0)", 0.37127941669980136, false},
        {"asin(0.5)", 0.52359877559829887},
        {"acos(0,5)", 1.0471975511965976},
        {"atan(1)", Pi / 4},
        {"sqrt(16)", 4},
        {"sqrt 16", 4},
        {"2*sqrt(9)", 2 * 3.3166247903554}, // the root of 2+9
        {"sqrt(9)*(4)", 39},                // the operand stays 9: 3*(9+4)
        {"sin(90)*(4)", 5},                 // here it is the sine
        {"2*sin(90)", 2},
        {"sqrt(-4)", 0},
        {"sqrt(-4)+5 x", 0},   // ends the formula
        {"(sqrt(-4))*2+3", 3}, // or its parenthesis
        {"1+sqrt(-4)*2", 2},   // behind ")" the sum goes on, with the operand 1
        {"sqrt(0-4", 0},
        {"sin((30))*2", 0.5}, // both "(" are skipped, one ")" is, the other one ends the text
        {"sin sin(30)", 0.5}, // letters of the name and blanks are skipped
        {"sinsss(30)", 0.5},
        {"tan atan(45)", 1},
        {"sin 30+60", 1},
        {"cos", 1},
        {"sinus", 0},
        {"pi", Pi},
        {"2*pi", 2 * Pi},
        {"PI(2)", Pi + 2}, // the ")" ends the text
        {"pi pi", Pi},
        {"2 pi*3", 3 * (2 + Pi)},
        {"3*pi*(2)", 3 * Pi * 5}, // pi is no operand: 3+2
    };
    expectValues(cases);
}

TEST(FormulaInterpreter, points)
{
    static const Case cases[] = {
        {".5", 0.5},         {",5+.25", 0.75}, {".", 0}, {"5+.", 5}, {"1/.", DBL_MAX, false},
        {"3.", 3},           {". 5", 0.05}, // ".05"
        {". 5+3", 3.05},                    // the "+" is passed over
        {". 5-3 4", 304.05},                // and blanks of the rest are 0, too
        {".+3", 3},                         // no number, but the value 0, and the "+" is next
        {"..5", 0.5},        {".x", 0},
    };
    expectValues(cases);
}

TEST(FormulaInterpreter, charactersWithoutMeaning)
{
    static const Case cases[] = {
        {"", 0},
        {" ", 0, false},
        {"abc", 0, false},
        {"(abc)", 0, false},
        {"2x", 2},
        {"2\t3", 2},
        {"2^3", 2},
        {"2-3x", -1},
        {"2-3x+4", -1, false}, // "-" has changed the sign behind it
        {"2-3-1x+4", -2, false},
        {"2-3+1x+4", 0}, // turned round twice
        {"2-(3x)+4", 2 - 3, false},
        {"2-3x(+4)", -1},
        {"2-3x)+4", -1},
        {"2-3xe+4", -1},  // not the sign of an exponent
        {". 5x 1", 1.05}, // "x" is passed over, then comes 01
        {". 5xy 1", 0.05, false},
        {". 5xy1", 0.05},
        {"2*(3x", 10},
        {"2/(x", 1}, // 2/(2+0)
        {"1/sin(x", DBL_MAX, false},
        {"\xC4", 0, false},
    };
    expectValues(cases);
}

TEST(FormulaInterpreter, bars)
{
    static const Case cases[] = {
        {"4d12", 4 * 144 * Pi / 400},
        {"4 D 12", 4 * 144 * Pi / 400},
        {"d12", 144 * Pi / 400},
        {"D 12", 144 * Pi / 400},
        {"4d12.7", 4 * 144 * Pi / 400},    // a whole diameter
        {"d12.7", 12.7 * 12.7 * Pi / 400}, // but not of a single bar
        {"d12,7", 144 * Pi / 400},         // the comma is no point here
        {"1.9d12", 144 * Pi / 400},
        {"-4d12", -4 * 144 * Pi / 400},
        {"x4d12", 0},
        {"2 12d", 2 * 144 * Pi / 400}, // wherever the letter stands
        {"d4 12", 4 * 144 * Pi / 400},
        {"dd12dd", 144 * Pi / 400},
        {"dx", 0},
        {"99999999999d1", 2147483647 * Pi / 400},
        {"d0x1d", Pi / 400},
        {"12d", 12}, // one part, but the letter is not in front
        {"4*2d12", 4 * 144 * Pi / 400},
        {"4)d12", 4},
        {"4dx12", 4},
        {"1d2d3", 1},
        {"d", 0, false},
        {"dD ", 0, false},
    };
    expectValues(cases);
}

TEST(FormulaInterpreter, nullAndTerminators)
{
    const FormulaInterpreter interpreter;
    EXPECT_EQ(interpreter.value(static_cast<const char*>(nullptr)), 0.0);
    EXPECT_EQ(FormulaInterpreter::evaluate(static_cast<const char*>(nullptr)), 0.0);
    EXPECT_EQ(interpreter.value(std::string("1+2\0+3", 6)), 3.0);
    EXPECT_EQ(interpreter.tryValue(std::string("2-3\0+4", 6)), mdt::Nullable<double>(-1.0));
}

TEST(FormulaInterpreter, localeDoesNotMatter)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "de_DE", "German"}) {
        if (std::setlocale(LC_ALL, name) != nullptr)
            break;
    }
    EXPECT_EQ(FormulaInterpreter::evaluate("1.5+0x1.8+d"), 3.0);
    EXPECT_DOUBLE_EQ(FormulaInterpreter::evaluate("d2.5"), 6.25 * Pi / 400);
    std::setlocale(LC_ALL, before.c_str());
}

TEST(FormulaInterpreter, shortTextsTakeNoMemory)
{
    const std::string texts[] = {
        "2*(3,5+1)/4",          std::string(64, '('), std::string(64, '-'),
        std::string(64, '+'),   "-(-(e1-(",           "4d12",
        ". -1+(sqrt(-4))x 5-6", "1.5e-3-0x1.8p-1+2",
    };
    const FormulaInterpreter interpreter;
    for (const std::string& text : texts) {
        const std::size_t before = allocationCount;
        interpreter.value(text);
        EXPECT_EQ(allocationCount, before) << text;
    }
}

// Every piece of the language, the ones that act on others more often.
std::string randomFormula(std::mt19937& random)
{
    static const char* const pieces[] = {
        "-",     "-",    "-",    "+",    "+",     "(",      "(",   "(",     ")",    ")",
        "e",     "e",    ".",    ".",    " ",     " ",      "\t",  "1",     "2.5",  "3,25",
        "0",     "7e2",  "1e-2", "1e+",  "0xe",   "0x1p-2", "*",   "/",     "0x1.", "x",
        "p",     "pi",   "PI",   "cos",  "sqrt",  "sin(",   "tan", "asin(", "acos", "E-",
        "sqrt(", "atan", "0xe-", "0xe(", "0xe+(", ". e-",
    };
    std::string text;
    const bool isNarrow = random() % 2 == 0;
    for (auto length = random() % 25; length > 0; --length)
        text += pieces[random() % (isNarrow ? 25 : std::size(pieces))];
    return text;
}

bool isSameDouble(double a, double b)
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

TEST(FormulaInterpreter, agreesWithTheRulesWordByWord)
{
    std::mt19937 random(5);
    const FormulaInterpreter interpreter;
    for (int i = 0; i < 300000; ++i) {
        const std::string text = randomFormula(random);
        const FormulaReference reference(text);
        const double value = interpreter.value(text);
        ASSERT_TRUE(isSameDouble(value, reference.value()))
            << '"' << text << "\": " << value << ", not " << reference.value();
        ASSERT_EQ(interpreter.tryValue(text).hasValue(), reference.isValid()) << '"' << text << '"';
    }
}

TEST(FormulaInterpreter, longTexts)
{
    const auto repeated = [](const std::string& text) {
        std::string result;
        for (int i = 0; i < 1000000; ++i)
            result += text;
        return result;
    };
    const auto value = [](const std::string& text) { return FormulaInterpreter::evaluate(text); };
    EXPECT_EQ(value(repeated("-") + "1"), -1.0);
    EXPECT_EQ(value(repeated("+") + "1"), 1.0);
    EXPECT_EQ(value(repeated("(") + "1" + repeated(")")), 1.0);
    EXPECT_EQ(value(repeated("-(") + "1"), 1.0);
    EXPECT_EQ(value(repeated("-(e") + "1"), 0.0);
    EXPECT_EQ(value(repeated("1-")), -999998.0);
    EXPECT_EQ(value(repeated("-0xe(") + "1"), 1.0);
    EXPECT_EQ(value(repeated("0xe-") + "1"), 1.0);
    EXPECT_EQ(value(repeated("a")), 0.0);
    EXPECT_EQ(value("-" + repeated("(") + repeated("x+")), 0.0);
    EXPECT_EQ(value(repeated("sin ") + "(90)"), 1.0);
    EXPECT_EQ(value(repeated("sqrt(")), 0.0);
    EXPECT_EQ(value(repeated(". ")), 0.0);
    EXPECT_EQ(value(repeated(".x")), 0.0);
    EXPECT_EQ(value(repeated("pi")), Pi);
    EXPECT_EQ(value(repeated("d")), 0.0);
    EXPECT_EQ(value(repeated("1 d")), 1.0);
    EXPECT_EQ(value(repeated("9")), HUGE_VAL);
    EXPECT_EQ(value("0." + repeated("0") + "1"), 0.0);
}

}
