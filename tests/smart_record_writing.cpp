#include "support/files.h"
#include "support/records.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <locale>
#include <stdexcept>
#include <vector>

namespace {

using namespace MdToolsTest;
using namespace Tools::Smart;

TEST(SmartRecord, writes)
{
    const Record record = parsed("(count = 3 label = \"Beam 1\" nodes = [(x = 0.5)] scale = 1.25)");
    EXPECT_EQ(written(record), "(\n"
                               "  count = 3\n"
                               "  label = \"Beam 1\"\n"
                               "  nodes = \n"
                               "  [\n"
                               "    (\n"
                               "      x = 0.5\n"
                               "    )\n"
                               "  ]\n"
                               "  scale = 1.25\n"
                               ")\n");
    EXPECT_EQ(written(parsed("(a = (b = 1))"), "\t", 1),
              "\t(\n\t\ta = \n\t\t(\n\t\t\tb = 1\n\t\t)\n\t)\n");
    EXPECT_EQ(written(parsed("(a = 1)"), "--", 1), "(\na = 1\n)\n");
    EXPECT_EQ(written(parsed("(a = 1)"), "", 1), "(\na = 1\n)\n");
    EXPECT_EQ(written(parsed("(a = 1)"), " ", -1), "(\na = 1\n)\n");
    EXPECT_EQ(written(Record()), "(\n)\n");
    std::ostringstream stream;
    Sequence().writeTo(stream, 0, " ");
    EXPECT_EQ(stream.str(), "[\n]\n");

    Record quoted;
    quoted.setText("a", "x\"y").setText("b", "x\"y", false);
    EXPECT_EQ(written(quoted), "(\n  a = \"x\\\"y\"\n  b = \"x\"y\"\n)\n");
    EXPECT_EQ(parsed(written(quoted.erase("b"))).getText("a"), "x\"y");
    Record whole;
    whole.setReal("r", 3.0);
    whole = parsed(written(whole));
    EXPECT_EQ(whole.typeOf("r"), Type::Decimal);
    EXPECT_EQ(whole.getReal("r"), 3.0);
}

// Groups digits by two and has a decimal comma.
class Comma : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\2"; }
};

std::vector<double> someReals()
{
    const double inf = std::numeric_limits<double>::infinity();
    std::vector<double> reals = {
        0.0,
        -0.0,
        5e-324,
        1e-300,
        1e300,
        inf,
        -inf,
        std::nan(""),
        -std::nan(""),
        // Around the borders of the general notation.
        1e5,
        999999.4,
        999999.5,
        9.9999995,
        0.0001,
        0.00001,
        1e15,
        1e16,
        123456789012345680.0,
        // Ties and near ones.
        2.5,
        1234565.0,
        123456.5,
        1.0000005,
        0.1,
    };
    std::mt19937_64 random(5);
    for (int i = 0; i < 2000; ++i) {
        const double mantissa = static_cast<double>(random() % 10000000);
        reals.push_back(mantissa * std::pow(10.0, static_cast<int>(random() % 30) - 20));
        reals.push_back(std::ldexp(mantissa, static_cast<int>(random() % 60) - 40));
    }
    return reals;
}

using Setting = void (*)(std::ostream&);

const Setting Settings[] = {
    [](std::ostream&) {},
    [](std::ostream& s) { s.precision(17); },
    [](std::ostream& s) { s.precision(0); },
    [](std::ostream& s) { s.precision(-1); },
    [](std::ostream& s) { s.precision(300); },
    [](std::ostream& s) { s << std::fixed << std::setprecision(3); },
    [](std::ostream& s) { s << std::scientific; },
    [](std::ostream& s) { s << std::hexfloat; },
    [](std::ostream& s) { s << std::hex << std::showbase << std::uppercase; },
    [](std::ostream& s) { s << std::showpoint << std::showpos; },
    [](std::ostream& s) { s.imbue(std::locale(std::locale::classic(), new Comma)); },
};

TEST(SmartRecord, writesNumbersAsTheStreamDoes)
{
    const std::vector<double> reals = someReals();
    for (const Setting& set : Settings) {
        SCOPED_TRACE(&set - Settings);
        Sequence sequence;
        std::ostringstream expected;
        set(expected);
        expected << "[" << std::endl;
        for (const double real : reals) {
            const int decimal =
                std::isfinite(real) ? static_cast<int>(std::fmod(real, 1e9)) : -1234;
            sequence.push_back(Record().setReal("r", real).setDecimal("d", decimal));
            expected << "(\nd = " << decimal << "\nr = " << real << "\n)\n";
        }
        expected << "]\n";
        std::ostringstream stream;
        set(stream);
        sequence.writeTo(stream, 0, "");
        EXPECT_EQ(stream.str(), expected.str());
    }
    std::ostringstream wide;
    wide << std::setw(4) << std::setfill('*');
    Record().setDecimal("d", 1).writeTo(wide, 0, "");
    EXPECT_EQ(wide.str(), "***(\nd = 1\n)\n");
    std::ostringstream indented;
    indented << std::setw(4) << std::setfill('*');
    Sequence().writeTo(indented, 2, " ");
    EXPECT_EQ(indented.str(), "***  [\n  ]\n");
}

// Notes the state of the text at each flush.
class Flushes : public std::stringbuf {
public:
    std::vector<std::string> states;
    int result = 0;

protected:
    int sync() override
    {
        states.push_back(str());
        return result;
    }
};

TEST(SmartRecord, flushesEachLine)
{
    const Record record = parsed("(a = 1 b = \"x\")");
    for (const bool isPlain : {true, false}) {
        Flushes buffer;
        std::ostream stream(&buffer);
        if (!isPlain)
            stream << std::showpos;
        record.writeTo(stream, 0, " ");
        const std::string a = isPlain ? " a = 1\n" : " a = +1\n";
        EXPECT_EQ(buffer.states,
                  (std::vector<std::string>{"(\n", "(\n" + a, "(\n" + a + " b = \"x\"\n",
                                            "(\n" + a + " b = \"x\"\n)\n"}));
    }
    Flushes full;
    full.result = -1;
    std::ostream stream(&full);
    record.writeTo(stream, 0, "");
    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(full.str(), "(\n");
    std::ostream none(nullptr);
    record.writeTo(none, 0, "");
    EXPECT_TRUE(none.bad());
}

// Fails, in one way or another, from its n-th line on.
class Failing : public std::stringbuf {
public:
    enum Way { Short, Throws, SyncFails, SyncThrows };
    Failing(Way way, int line) : m_way(way), m_line(line) {}

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override
    {
        if (m_line > 0 || m_way > Throws)
            return std::stringbuf::xsputn(text, size);
        return m_way == Short ? 0 : throw std::domain_error("full");
    }
    int_type overflow(int_type c) override
    {
        if (m_line > 0 || m_way > Throws)
            return std::stringbuf::overflow(c);
        return m_way == Short ? traits_type::eof() : throw std::domain_error("full");
    }
    int sync() override
    {
        if (--m_line > 0 || m_way < SyncFails)
            return 0;
        return m_way == SyncFails ? -1 : throw std::domain_error("full");
    }

private:
    Way m_way;
    int m_line;
};

// As if each piece went through the stream's own operators.
TEST(SmartRecord, failsAsTheStreamDoes)
{
    const Record record = parsed("(a = \"x\" b = \"y\")");
    const auto outcome = [&record](Failing::Way way, int line, bool throws, bool isPlain) {
        Failing buffer(way, line);
        std::ostream stream(&buffer);
        if (!isPlain)
            stream << std::showpos;
        if (throws)
            stream.exceptions(std::ios_base::badbit);
        std::string text;
        try {
            record.writeTo(stream, 0, "");
        } catch (const std::domain_error&) {
            text = "domain_error ";
        } catch (const std::ios_base::failure&) {
            text = "failure ";
        }
        return text + std::to_string(stream.rdstate()) + " " + buffer.str();
    };
    for (const Failing::Way way :
         {Failing::Short, Failing::Throws, Failing::SyncFails, Failing::SyncThrows})
        for (const int line : {1, 3, 4, 5})
            for (const bool throws : {false, true}) {
                SCOPED_TRACE(std::to_string(way) + " " + std::to_string(line));
                EXPECT_EQ(outcome(way, line, throws, true), outcome(way, line, throws, false));
            }
}

// A text that is longer than the stream's buffer, and the first thing that comes there.
TEST(SmartRecord, writesLongTextsToFiles)
{
    const std::string path = workPath("long.txt");
    Record record;
    record.setText("a", std::string(5000, 'x')).setDecimal("b", 1);
    {
        std::ofstream file(path, std::ios_base::binary);
        record.writeTo(file, 0, "");
    }
    EXPECT_EQ(readFile(path), "(\na = \"" + std::string(5000, 'x') + "\"\nb = 1\n)\n");
}

// Texts without backslashes come back, whatever else is in the tree.
TEST(SmartRecord, readsBackWhatItWrites)
{
    std::mt19937 random(17);
    for (int round = 0; round < 300; ++round) {
        Record record;
        try {
            record = parsed(randomText(random, 4, 20));
        } catch (const WrongToken&) {
            continue;
        }
        for (auto n = random() % 4; n > 0; --n) {
            std::string text;
            for (auto i = random() % 60; i > 0; --i)
                text += static_cast<char>(random());
            std::erase(text, '\\');
            record.setText("t" + std::to_string(n), text);
        }
        std::ostringstream out;
        out << std::scientific << std::setprecision(17);
        record.writeTo(out, 0, round % 2 == 0 ? " " : "\t");
        Record back = parsed(out.str());
        for (const auto& [name, type] : Record(record))
            if (type == Type::Text && record.getText(name).find('"') != std::string::npos)
                back.setText(name, back.getText(name));
        EXPECT_EQ(dump(back), dump(record));
    }
}

}
