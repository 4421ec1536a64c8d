#include "support/text_source.h"

#include <mdtools/smart_record.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <locale>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Tools::Smart;
using MdToolsTest::TextSource;

std::string written(const Record& record, const std::string& unit = "  ", int level = 0)
{
    std::ostringstream stream;
    record.writeTo(stream, level, unit);
    return stream.str();
}

// The whole tree in one line, however the writer would write it. Not for deep trees.
std::string dump(const Record& record);

std::string dump(const Sequence& sequence)
{
    std::string text = "[";
    for (const Record& record : sequence)
        text += dump(record);
    return text + "]";
}

std::string dump(const Record& record)
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

Record parsed(const std::string& input)
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

TEST(SmartRecord, typesHaveNames)
{
    const char* const names[] = {"none", "text", "decimal", "real", "Sequence", "Record"};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(typeName(static_cast<Type>(i)), names[i]);
    for (const int i : {-1, 6})
        EXPECT_EQ(typeName(static_cast<Type>(i)), "error - not specified...");
}

TEST(SmartRecord, setsAndGets)
{
    Record inner;
    inner.setDecimal("x", 1);
    Sequence sequence;
    sequence.push_back(inner).push_back(Record());
    Record record;
    record.setText("t", "a\"b").setText("raw", "a\"b", false).setDecimal("d", -3).setReal("r", 2.5);
    record.setRecord("rec", inner).setSequence("seq", sequence);
    EXPECT_EQ(dump(record), "(d:-3 r:r2.5 raw:'a\"b' rec:(x:1 ) seq:[(x:1 )()] t:'a\\\"b' )");

    const struct {
        const char* name;
        Type type;
    } entries[] = {{"t", Type::Text},
                   {"d", Type::Decimal},
                   {"r", Type::Real},
                   {"rec", Type::Record},
                   {"seq", Type::Sequence}};
    for (const auto& e : entries) {
        SCOPED_TRACE(e.name);
        EXPECT_EQ(record.typeOf(e.name), e.type);
        EXPECT_TRUE(record.exists(e.name));
        for (int i = 0; i < 6; ++i) {
            const Type type = static_cast<Type>(i);
            const bool isLenient = type == Type::Real && e.type == Type::Decimal;
            EXPECT_EQ(record.exists(type, e.name), type == e.type || isLenient);
        }
        EXPECT_EQ(record.existsText(e.name), e.type == Type::Text);
        EXPECT_EQ(record.existsDecimal(e.name), e.type == Type::Decimal);
        EXPECT_EQ(record.existsReal(e.name), e.type == Type::Real || e.type == Type::Decimal);
        EXPECT_EQ(record.existsRecord(e.name), e.type == Type::Record);
        EXPECT_EQ(record.existsSequence(e.name), e.type == Type::Sequence);
    }
    EXPECT_EQ(record.getReal("d"), -3.0);
    EXPECT_FALSE(record.exists("T"));
    EXPECT_FALSE(record.exists(Type::None, "T"));
    record.erase("seq").erase("rec").erase("t").erase("raw").erase("d");
    EXPECT_EQ(dump(record), "(r:r2.5 )");
    EXPECT_EQ(dump(record.erase("r")), "()");
}

TEST(SmartRecord, reportsWhatIsWrong)
{
    Record record;
    record.setText("t", "x").setDecimal("d", 1);
    const std::string missing = "Tools::Smart::NotAvailable: no";
    EXPECT_EQ(messageOf<NotAvailable>([&] { record.getText("no"); }), missing);
    EXPECT_EQ(messageOf<NotAvailable>([&] { record.getReal("no"); }), missing);
    EXPECT_EQ(messageOf<NotAvailable>([&] { record.typeOf("no"); }), missing);
    EXPECT_EQ(messageOf<NotAvailable>([&] { record.erase("no"); }), missing);
    EXPECT_EQ(messageOf<std::logic_error>([&] { Record().erase("no"); }), missing);
    EXPECT_EQ(messageOf<NotAvailable>([&] { record.getReal("t"); }),
              "Tools::Smart::WrongType: t, want [real], get [text]");
    EXPECT_EQ(messageOf<WrongType>([&] { record.getSequence("d"); }),
              "Tools::Smart::WrongType: d, want [Sequence], get [decimal]");
    EXPECT_EQ(messageOf<WrongType>([&] { record.getRecord("d"); }),
              "Tools::Smart::WrongType: d, want [Record], get [decimal]");
    EXPECT_THROW(record.getText("d"), WrongType);
    EXPECT_THROW(record.getDecimal("t"), WrongType);
    EXPECT_THROW(std::as_const(record)[Property<Real>("t")], WrongType);
    try {
        record.getReal("t");
    } catch (const WrongType& e) {
        EXPECT_EQ(e.getName(), "t");
        EXPECT_EQ(e.getWanted(), Type::Real);
        EXPECT_EQ(e.getActual(), Type::Text);
    }
}

TEST(SmartRecord, indexResets)
{
    const Property<Text> text("t");
    const Property<Decimal> decimal("d");
    const Property<Real> real("r");
    const Property<Record> inner("rec");
    const Property<Sequence> sequence("seq");
    Record record;
    for (int round = 0; round < 2; ++round) {
        record[text] = "a\"b";
        record[decimal] = 3;
        record[real] = 2.5;
        record[inner].setDecimal("x", 1);
        record[sequence].push_back(Record());
        const Record& constant = record;
        EXPECT_EQ(constant[text], "a\"b");
        EXPECT_EQ(constant[decimal], 3);
        EXPECT_EQ(constant[real], 2.5);
        EXPECT_EQ(dump(constant[inner]), "(x:1 )");
        EXPECT_EQ(constant[sequence].size(), 1U);
    }
    EXPECT_EQ(record[text], "");
    EXPECT_EQ(record[decimal], 0);
    EXPECT_EQ(record[real], 0.0);
    EXPECT_EQ(dump(record[inner]), "()");
    EXPECT_EQ(record[sequence].size(), 0U);
    // Of another type.
    EXPECT_EQ(record[Property<Real>("t")], 0.0);
    EXPECT_EQ(record[Property<Decimal>("rec")], 0);
    EXPECT_EQ(record[Property<Text>("seq")], "");
    EXPECT_EQ(record[Property<Record>("d")].begin(), record[Property<Record>("d")].end());
    EXPECT_EQ(record[Property<Decimal>("r")], 0);
    EXPECT_EQ(dump(record), "(d:() r:0 rec:0 seq:'' t:r0 )");
}

TEST(SmartRecord, takesItsOwnParts)
{
    Record record =
        parsed("(a = (b = (c = 1)) t = \"t\" s = [(x = 1)] long = \"a text of the heap, long\")");
    record.setRecord("a", record);
    EXPECT_EQ(dump(record.getRecord("a").getRecord("a").getRecord("b")), "(c:1 )");
    record.setSequence("s", record.getRecord("a").getSequence("s"));
    record.setText("t", record.getText("long"));
    record.setText("a", record.getRecord("a").getText("long"));
    EXPECT_EQ(record.getText("a"), "a text of the heap, long");
    record.setText("t", "t");
    record.setDecimal(record.getText("t"), 5);
    record.setText("k", "k").erase(record.getText("k"));
    EXPECT_EQ(record.getDecimal("t"), 5);

    record = parsed("(a = (b = (c = 1)))");
    record = record.getRecord("a");
    EXPECT_EQ(dump(record), "(b:(c:1 ) )");
    Record& inner = record[Property<Record>("i")];
    inner.setDecimal("x", 1);
    record = std::move(inner);
    EXPECT_EQ(dump(record), "(x:1 )");
    record = *&record;
    EXPECT_EQ(dump(record), "(x:1 )");

    Sequence sequence;
    sequence.push_back(record);
    sequence[0].setSequence("s", sequence);
    for (int i = 0; i < 3; ++i)
        sequence.push_back(sequence[0]);
    sequence = sequence[2].getSequence("s");
    EXPECT_EQ(dump(sequence), "[(x:1 )]");
}

TEST(SmartRecord, iteratesInOrderWhileEntriesComeAndGo)
{
    Record record;
    for (const char* name : {"b", "a\xff", "a", "abcde", "abcdf", "\x80", "B"})
        record.setDecimal(name, 1);
    record.setDecimal(std::string("a\0", 2), 1);
    std::string names;
    for (auto i = record.begin(); i != record.end(); i++)
        names += i->first + " ";
    EXPECT_EQ(names, "B a " + std::string("a\0", 2) + " abcde abcdf a\xff b \x80 ");

    auto i = record.begin();
    record.setText("A", "in front");
    record.erase("B");
    EXPECT_EQ((*++i).first, "a");
    record.setReal("a", 1.0);
    EXPECT_EQ((*i).second, Type::Real);
    for (i = record.begin(); i != record.end();) {
        const std::string name = (*i++).first;
        record.erase(name);
    }
    EXPECT_TRUE(record.begin() == record.end());
}

// Against ordered maps, in small and large records. References to values stay as long as their
// entries do.
TEST(SmartRecord, behavesLikeMaps)
{
    std::mt19937 random(3);
    for (const unsigned names : {5U, 60U, 3000U}) {
        Record record;
        std::map<std::string, std::string> model;
        std::map<std::string, const void*> places;
        std::vector<Record> copies;
        for (int step = 0; step < 20000; ++step) {
            const std::string name = "n" + std::to_string(random() % names);
            const int value = static_cast<int>(random() % 100);
            const std::string number = std::to_string(value);
            const std::string text = "a text that is not stored in place " + number;
            const std::string before = model.contains(name) ? model[name].substr(0, 1) : "";
            const void* place = nullptr;
            std::string after;
            switch (random() % 8) {
            case 0:
            case 1:
                place = &(record[Property<Decimal>(name)] = value);
                after = number;
                break;
            case 2:
                place = &(record[Property<Real>(name)] = value + 0.5);
                after = "r" + number + ".5";
                break;
            case 3:
                record.setText(name, text);
                place = &record.getText(name);
                after = "'" + text + "'";
                break;
            case 4:
                record.setRecord(name, Record().setDecimal("x", value));
                place = &record.getRecord(name);
                after = "(x:" + number + " )";
                break;
            case 5:
                place = &record[Property<Sequence>(name)].push_back(Record());
                after = "[()]";
                break;
            case 6:
                if (before.empty())
                    EXPECT_THROW(record.erase(name), NotAvailable);
                else
                    record.erase(name);
                model.erase(name);
                places.erase(name);
                break;
            default:
                // From now on the names are shared with a copy.
                if (random() % 100 == 0)
                    copies.push_back(record);
                break;
            }
            if (after.empty())
                continue;
            const auto kind = [](const std::string& s) {
                return std::isdigit(static_cast<unsigned char>(s[0])) != 0 ? '0' : s[0];
            };
            if (!before.empty() && kind(before) == kind(after)) {
                EXPECT_EQ(places[name], place);
            }
            model[name] = after;
            places[name] = place;
        }
        std::string expected = "(";
        for (const auto& [name, value] : model)
            expected += name + ":" + value + " ";
        EXPECT_EQ(dump(record), expected + ")");
        EXPECT_EQ(dump(Record(record)), expected + ")");
        for (const auto& [name, place] : places) {
            switch (record.typeOf(name)) {
            case Type::Text:
                EXPECT_EQ(&record.getText(name), place);
                break;
            case Type::Record:
                EXPECT_EQ(&record.getRecord(name), place);
                break;
            case Type::Sequence:
                EXPECT_EQ(&record.getSequence(name), place);
                break;
            default:
                break;
            }
        }
    }
}

TEST(SmartRecord, takesNamesInAnyOrder)
{
    constexpr int Count = 300000;
    const auto nameOf = [](unsigned n) {
        std::string name = std::to_string(n);
        return std::string(7 - name.size(), '0') + name;
    };
    for (const int order : {0, 1, 2}) {
        Record record;
        for (unsigned i = 0; i < Count; ++i) {
            const unsigned n = order == 0   ? i
                               : order == 1 ? Count - 1 - i
                                            : static_cast<unsigned>(i * 524287ULL % Count);
            record.setDecimal(nameOf(n), static_cast<int>(n));
        }
        unsigned n = 0;
        for (const auto& [name, type] : record)
            ASSERT_EQ(name, nameOf(n++));
        EXPECT_EQ(n, static_cast<unsigned>(Count));
        EXPECT_EQ(record.getDecimal("0277777"), 277777);
        for (unsigned i = 0; i + 1 < Count; ++i)
            record.erase(nameOf(order == 0 ? i : Count - 1 - i));
        EXPECT_NE(record.begin(), record.end());
    }
}

TEST(SmartSequence, keepsOrderAndReferences)
{
    Sequence sequence;
    const auto end = sequence.end();
    EXPECT_TRUE(sequence.begin() == end);
    std::vector<const Record*> places;
    sequence.push_back(Record().setDecimal("i", 0));
    auto first = sequence.begin();
    for (int i = 1; i < 1000; ++i)
        sequence.push_back(Record().setDecimal("i", i));
    for (std::size_t i = 0; i < sequence.size(); ++i)
        places.push_back(&sequence[i]);
    sequence.push_back(Record());
    int expected = 0;
    for (; first != end && expected < 1000; ++first, ++expected) {
        EXPECT_EQ(first->getDecimal("i"), expected);
        EXPECT_EQ(&*first, places[static_cast<std::size_t>(expected)]);
    }
    EXPECT_EQ(expected, 1000);
    auto back = sequence.end();
    EXPECT_FALSE((*--back).exists("i"));
    EXPECT_EQ((--back)->getDecimal("i"), 999);
    const Sequence& constant = sequence;
    EXPECT_EQ(constant.end() == Sequence::const_iterator(sequence.end()), true);
    EXPECT_EQ(std::distance(constant.begin(), constant.end()), 1001);

    EXPECT_EQ(messageOf<std::out_of_range>([&] { sequence[1001]; }),
              "Sequence::operator[](size_t index)");
    EXPECT_EQ(messageOf<std::out_of_range>([&] { constant[1001]; }),
              "Sequence::operator[](int index)");
    const Sequence copy = sequence;
    sequence[0].setDecimal("i", 7);
    EXPECT_EQ(copy[0].getDecimal("i"), 0);
}

TEST(SmartRecord, reads)
{
    static const struct {
        const char *input, *tree, *error, *rest;
    } cases[] = {
        {"()x", "()", "", "x"},
        {"(a = 1 b = 2.5 c = \"t\" d = (e = 3) f = [(g = 4)()]) next",
         "(a:1 b:r2.5 c:'t' d:(e:3 ) f:[(g:4 )()] )", "", " next"},
        {"# comment\n(a=1 b=2 #)\nc=-3)(", "(a:1 b:2 c:-3 )", "", "("},
        {"(a = 1 a = \"t\")", "(a:'t' )", "", ""},
        {"(a = (a = 1 a = 2.5 a = \"x\" b = 1 a = 7))", "(a:(a:7 b:1 ) )", "", ""},
        {"(a = (x = 1) a = (y = 2))", "(a:(y:2 ) )", "", ""},
        {"(a = \"a\\\"b\")", "(a:'a\"b' )", "", ""},
        {"(a = 3.0)", "(a:r3 )", "", ""},
        {"", "()", "( invalid", ""},
        {"[]", "()", "( [", "]"},
        {"1x", "()", "( invalid", ""},
        {"(a 1)", "()", "= decimal", ")"},
        {"(a = )", "()", "text )", ""},
        {"(a = 1 = 2)", "(a:1 )", "identifier =", " 2)"},
        {"(a = b)", "()", "text identifier", ")"},
        {"(1 = 2)", "()", "identifier decimal", " = 2)"},
        {"(a = 1 b = (c = 2 d))", "(a:1 )", "= )", ")"},
        {"(a = 1 b = [(c = 2) 3])", "(a:1 )", "( decimal", "])"},
        // Cut off anywhere
        {"(", "()", "", ""},
        {"(a", "()", "", ""},
        {"(a =", "()", "", ""},
        {"(a = 1", "(a:1 )", "", ""},
        {"(a = \"t", "()", "", ""},
        {"(a = 1 b = (c = 2", "(a:1 b:(c:2 ) )", "", ""},
        {"(a = [(b = 1)(c", "(a:[(b:1 )()] )", "", ""},
        {"(a = [", "(a:[] )", "", ""},
        // An invalid token ends the reading; every level takes one more token.
        {"(a = 1 b = 1x c = 2)", "(a:1 )", "", " c = 2)"},
        {"(a = (b = (c = 1x d = 2", "(a:(b:() ) )", "", " 2"},
        {"(a = [(b = 1x c = 2", "(a:[()] )", "", " 2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.input);
        std::istringstream stream(c.input);
        Record record;
        std::string error;
        try {
            record.readFrom(stream);
        } catch (const WrongToken& e) {
            error = tokenTypeName(e.getWanted()) + " " + tokenTypeName(e.getActual());
            EXPECT_EQ(e.getToken().getType(), e.getActual());
        }
        EXPECT_EQ(dump(record), c.tree);
        EXPECT_EQ(error, c.error);
        stream.clear();
        std::string rest;
        std::getline(stream, rest);
        EXPECT_EQ(rest, c.rest);
    }
    EXPECT_EQ(messageOf<std::runtime_error>([] { parsed("(a 1)"); }),
              "Tools::Smart::WrongToken: want [=], get [decimal]");
}

// Which of its numbers are reals may differ from record to record.
TEST(SmartRecord, tellsNumbersApart)
{
    constexpr int Count = 50;
    const auto textOf = [](int shift, const char* equals, const char* real, const char* decimal) {
        std::string text = "(";
        for (int i = 0; i < Count; ++i)
            text += "n" + std::to_string(i + 10) + equals + ((i + shift) % 3 == 0 ? real : decimal);
        return text + ")";
    };
    const std::string input = textOf(0, " = ", "1.5 ", "2 ") + textOf(1, " = ", "1.5 ", "2 ");
    const std::string tree = textOf(0, ":", "r1.5 ", "2 ") + textOf(1, ":", "r1.5 ", "2 ");
    Record record = parsed("(s = [" + input + input + "])");
    EXPECT_EQ(dump(record), "(s:[" + tree + tree + "] )");
    Record first = record.getSequence("s")[0];
    for (int i = 0; i < Count; ++i) {
        const std::string name = "n" + std::to_string(i + 10);
        if (i % 3 == 0)
            first.setDecimal(name, 2);
        if ((i + 1) % 3 == 0)
            first.setReal(name, 1.5);
    }
    EXPECT_EQ(dump(first), textOf(1, ":", "r1.5 ", "2 "));
    EXPECT_EQ(dump(record), "(s:[" + tree + tree + "] )");
}

TEST(SmartRecord, mergesWhatItReads)
{
    Record record = parsed("(a = 1 b = \"x\" c = (d = 1))");
    std::istringstream stream("(b = 2 c = (e = 1)) [(x=1)] [(x=2)");
    record.readFrom(stream);
    EXPECT_EQ(dump(record), "(a:1 b:2 c:(e:1 ) )");
    EXPECT_TRUE(stream.good());
    Sequence sequence;
    sequence.readFrom(stream);
    IstreamTokenIterator tokens(stream);
    sequence.readFrom(tokens);
    EXPECT_EQ(dump(sequence), "[(x:1 )(x:2 )]");
    EXPECT_TRUE(tokens.end());
    EXPECT_TRUE(stream.eof());
    EXPECT_THROW(sequence.readFrom(tokens), WrongToken);
    EXPECT_EQ(messageOf<std::out_of_range>([&] { sequence[2]; }),
              "Sequence::operator[](size_t index)");
}

TEST(SmartRecord, letsTheStreamThrow)
{
    const std::string word(100, 'w');
    for (const std::string& input : {"(a = \"" + word + "\" " + word, "(" + word + " \"" + word}) {
        TextSource source(input, {7, true});
        std::istream stream(&source);
        stream.exceptions(std::ios_base::failbit);
        IstreamTokenIterator tokens(stream);
        Record record;
        EXPECT_THROW(record.readFrom(tokens), std::ios_base::failure);
        EXPECT_EQ(record.existsText("a"), input[1] == 'a');
        EXPECT_EQ(tokens->getType(), Token::OpenParenthesis);
        EXPECT_EQ(tokens->getValText(), "");
    }
}

// The grammar as it is told in the header, token by token into ordered maps.
class LiteralReader {
public:
    explicit LiteralReader(IstreamTokenIterator& tokens) : m_tokens(tokens) {}

    using Entries = std::map<std::string, std::string>;

    static std::string textOf(const Entries& entries)
    {
        std::string text = "(";
        for (const auto& [name, value] : entries)
            text += name + ":" + value + " ";
        return text + ")";
    }

    void readRecord(Entries& entries)
    {
        expect(Token::OpenParenthesis);
        if (advance())
            return;
        while (m_tokens->getType() != Token::CloseParenthesis) {
            expect(Token::Identifier);
            const std::string name = m_tokens->getValText();
            if (advance())
                return;
            expect(Token::Equals);
            if (advance())
                return;
            entries[name] = readValue();
            if (advance())
                return;
        }
    }

private:
    bool advance() { return (++m_tokens).end(); }

    void expect(Token::Type type)
    {
        if (m_tokens->getType() != type)
            throw WrongToken(type, *m_tokens);
    }

    std::string readValue()
    {
        std::ostringstream text;
        switch (m_tokens->getType()) {
        case Token::Text:
            return "'" + m_tokens->getValText() + "'";
        case Token::Decimal:
            return std::to_string(m_tokens->getValDecimal());
        case Token::Real:
            text << "r" << std::setprecision(17) << m_tokens->getValReal();
            return text.str();
        case Token::OpenParenthesis: {
            Entries nested;
            readRecord(nested);
            return textOf(nested);
        }
        case Token::OpenBracket:
            return readSequence();
        default:
            throw WrongToken(Token::Text, *m_tokens);
        }
    }

    std::string readSequence()
    {
        std::string text = "[";
        if (advance())
            return text + "]";
        while (m_tokens->getType() != Token::CloseBracket) {
            expect(Token::OpenParenthesis);
            Entries nested;
            readRecord(nested);
            text += textOf(nested);
            if (advance())
                break;
        }
        return text + "]";
    }

    IstreamTokenIterator& m_tokens;
};

// A record as text, mostly well-formed, of few or many names.
std::string randomText(std::mt19937& random, int depth, unsigned names)
{
    static const char* const values[] = {
        "1",         "2.5",         "-3e2",
        "\"t\"",     "\"a\" \"b\"", "\"a text, not stored in place\"",
        "\"a\\nb\"", "12345678.9",  "\"a\" # comment\n \"b\""};
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

// Records of one structure in a sequence, with some characters changed, inserted or cut off.
std::string randomInput(std::mt19937& random, int round)
{
    static const std::string characters = "()[]=\"#\\ \n\t1.-e9nab";
    std::string input = randomText(random, 3, round % 2 == 0 ? 3 : 40);
    if (round % 3 != 0) {
        std::string sequence = "(list = [";
        for (auto n = random() % 6; n > 0; --n)
            sequence += "\n  " + input;
        input = sequence + "\n])";
    }
    for (auto n = random() % 3; n > 0; --n)
        input[random() % input.size()] = characters[random() % characters.size()];
    if (random() % 4 == 0)
        input.insert(random() % input.size(), 1, characters[random() % characters.size()]);
    if (random() % 8 == 0)
        input.resize(random() % input.size());
    return input + "rest";
}

TEST(SmartRecord, readsLikeTheLiteralReader)
{
    std::mt19937 random(11);
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        const std::string input = randomInput(random, round);
        const TextSource::Kind kind = TextSource::Kinds[random() % std::size(TextSource::Kinds)];
        SCOPED_TRACE(input + " (" + std::to_string(kind.area) + ", " +
                     std::to_string(kind.canPutBack) + ")");
        TextSource source(input, kind);
        TextSource literalSource(input, kind);
        std::istream stream(&source);
        std::istream literalStream(&literalSource);
        IstreamTokenIterator tokens(stream);
        IstreamTokenIterator literalTokens(literalStream);
        Record record;
        LiteralReader::Entries entries;
        const std::string error = messageOf<WrongToken>([&] { record.readFrom(tokens); });
        EXPECT_EQ(error,
                  messageOf<WrongToken>([&] { LiteralReader(literalTokens).readRecord(entries); }));
        EXPECT_EQ(dump(record), LiteralReader::textOf(entries));
        EXPECT_EQ(stream.rdstate(), literalStream.rdstate());
        EXPECT_EQ(source.position(), literalSource.position());
        EXPECT_EQ(tokens.end(), literalTokens.end());
        EXPECT_EQ(tokens->getType(), literalTokens->getType());
        if (tokens->getType() == Token::Text || tokens->getType() == Token::Identifier) {
            EXPECT_EQ(tokens->getValText(), literalTokens->getValText());
        }
        EXPECT_EQ(dump(Record(record)), dump(record));
    }
}

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

TEST(SmartRecord, writesNumbersAsTheStreamDoes)
{
    const double inf = std::numeric_limits<double>::infinity();
    std::vector<double> reals = {0.0,          -0.0,
                                 1e5,          999999.5,
                                 999999.4,     0.0001,
                                 0.00001,      1e-300,
                                 5e-324,       1e300,
                                 inf,          -inf,
                                 std::nan(""), -std::nan(""),
                                 2.5,          1234565.0,
                                 0.1,          123456.5,
                                 1.0000005,    1e15,
                                 1e16,         123456789012345680.0,
                                 9.9999995};
    std::mt19937_64 random(5);
    for (int i = 0; i < 2000; ++i) {
        const double mantissa = static_cast<double>(random() % 10000000);
        reals.push_back(mantissa * std::pow(10.0, static_cast<int>(random() % 30) - 20));
        reals.push_back(std::ldexp(mantissa, static_cast<int>(random() % 60) - 40));
    }
    using Setting = void (*)(std::ostream&);
    const Setting settings[] = {
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
    for (const Setting set : settings) {
        SCOPED_TRACE(&set - settings);
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

// As long as a call for each level would end the stack.
TEST(SmartRecord, survivesAnyDepth)
{
    constexpr int Depth = 1000000;
    std::string input;
    for (int i = 0; i < Depth; ++i)
        input += i % 2 == 0 ? "(a=" : "[";
    const auto depthOf = [](const Record& record) {
        int depth = 0;
        for (const Record* r = &record; r != nullptr; depth += 2)
            r = r->existsSequence("a") && r->getSequence("a").size() > 0 ? &r->getSequence("a")[0]
                                                                         : nullptr;
        return depth;
    };
    std::istringstream stream(input);
    Record record;
    record.readFrom(stream);
    EXPECT_EQ(depthOf(record), Depth);
    const Record copy = record;
    Record assigned;
    assigned = copy;
    EXPECT_EQ(depthOf(assigned), Depth);
    const std::string text = written(assigned, "");
    EXPECT_EQ(written(parsed(text), ""), text);

    Record grown;
    for (int i = 0; i < Depth; ++i) {
        Record outer;
        outer.setRecord("a", std::move(grown));
        grown = std::move(outer);
    }
    EXPECT_EQ(written(grown, "").size(), static_cast<std::size_t>(Depth) * 9 + 4);
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

// Records of one structure share it between threads; each thread may still change its own.
TEST(SmartRecord, isUsedByThreads)
{
    const Record record = parsed("(a = 1 b = \"text\" c = (d = 2.5) e = [(f = 1)(f = 2)])");
    std::vector<std::thread> threads;
    std::vector<std::string> results(4);
    for (std::string& result : results)
        threads.emplace_back([&record, &result] {
            for (int i = 0; i < 200; ++i) {
                Record copy = record;
                copy.setDecimal("a", i)
                    .setText("c", record.getText("b"))
                    .erase("e")
                    .setReal("z", 1.5);
                Sequence sequence;
                sequence.push_back(copy).push_back(record).push_back(record.getRecord("c"));
                result = dump(sequence);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::string& result : results)
        EXPECT_EQ(result, "[(a:199 b:'text' c:'text' z:r1.5 )" + dump(record) + "(d:r2.5 )]");
}

}
