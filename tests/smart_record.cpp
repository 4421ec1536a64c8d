#include "support/records.h"

#include <gtest/gtest.h>

#include <cctype>
#include <iterator>
#include <map>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace MdToolsTest;
using namespace Tools::Smart;

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

    // The name stays the iterator's while it stays where it is, whatever becomes of the record.
    const std::string first = "a name that is not stored in place";
    record.setDecimal(first, 1).setDecimal("b", 1);
    i = record.begin();
    const std::string& name = i->first;
    for (const char* change : {"no", "other type", "erased", "empty", "assigned"}) {
        SCOPED_TRACE(change);
        if (change == std::string("other type"))
            record.setText(first, "now a text");
        else if (change == std::string("erased"))
            record.erase(name);
        else if (change == std::string("empty"))
            record.erase("b");
        else if (change == std::string("assigned"))
            record = Record().setReal("a", 1.5).setReal(first, 1.5);
        const Type expected = record.exists(first) ? record.typeOf(first) : Type::None;
        EXPECT_EQ(name, first);
        EXPECT_EQ(&i->first, &name);
        EXPECT_EQ(i->second, expected);
        EXPECT_TRUE(*i == Record::Iterator::value_type(first, expected));
    }
    EXPECT_TRUE(++i == record.end());
    i = record.begin();
    record = Record();
    EXPECT_EQ((*i).second, Type::None);
    EXPECT_TRUE(++i == record.end());
}

// A record beside an ordered map of what it should hold.
class Twins {
public:
    Twins(std::mt19937& random, unsigned names) : m_random(random), m_names(names) {}

    void step()
    {
        const std::string name = "n" + std::to_string(m_random() % m_names);
        const auto action = m_random() % 8;
        if (action < 6)
            set(name, action);
        else if (action == 6)
            erase(name);
        else if (m_random() % 100 == 0)
            m_copies.emplace_back(m_record, expected());
    }

    // References to values stay as long as their entries do, and copies what they were.
    void check()
    {
        EXPECT_EQ(dump(m_record), expected());
        EXPECT_EQ(dump(Record(m_record)), expected());
        for (const auto& [copy, content] : m_copies)
            EXPECT_EQ(dump(copy), content);
        for (const auto& [name, address] : m_addresses)
            EXPECT_EQ(addressOf(name), address) << name;
        EXPECT_EQ(dump(m_record), expected());
    }

private:
    std::string expected() const
    {
        std::string text = "(";
        for (const auto& [name, value] : m_values)
            text += name + ":" + value + " ";
        return text + ")";
    }

    // The index, which alone refers to numbers, resets them.
    const void* addressOf(const std::string& name)
    {
        switch (m_record.typeOf(name)) {
        case Type::Text:
            return &m_record.getText(name);
        case Type::Record:
            return &m_record.getRecord(name);
        case Type::Sequence:
            return &m_record.getSequence(name);
        case Type::Decimal: {
            const int value = m_record.getDecimal(name);
            return &(m_record[Property<Decimal>(name)] = value);
        }
        default: {
            const double value = m_record.getReal(name);
            return &(m_record[Property<Real>(name)] = value);
        }
        }
    }

    static char kindOf(const std::string& value)
    {
        return std::isdigit(static_cast<unsigned char>(value[0])) != 0 ? '0' : value[0];
    }

    void set(const std::string& name, std::size_t action)
    {
        const int value = static_cast<int>(m_random() % 100);
        const std::string number = std::to_string(value);
        const std::string text = "a text that is not stored in place " + number;
        const void* address = nullptr;
        std::string after;
        switch (action) {
        case 0:
        case 1:
            address = &(m_record[Property<Decimal>(name)] = value);
            after = number;
            break;
        case 2:
            address = &(m_record[Property<Real>(name)] = value + 0.5);
            after = "r" + number + ".5";
            break;
        case 3:
            m_record.setText(name, text);
            address = &m_record.getText(name);
            after = "'" + text + "'";
            break;
        case 4:
            m_record.setRecord(name, Record().setDecimal("x", value));
            address = &m_record.getRecord(name);
            after = "(x:" + number + " )";
            break;
        default:
            address = &m_record[Property<Sequence>(name)].push_back(Record());
            after = "[()]";
            break;
        }
        const auto before = m_values.find(name);
        if (before != m_values.end() && kindOf(before->second) == kindOf(after)) {
            EXPECT_EQ(m_addresses[name], address);
        }
        m_values[name] = after;
        m_addresses[name] = address;
    }

    void erase(const std::string& name)
    {
        if (m_values.erase(name) != 0)
            m_record.erase(name);
        else
            EXPECT_THROW(m_record.erase(name), NotAvailable);
        m_addresses.erase(name);
    }

    std::mt19937& m_random;
    unsigned m_names;
    Record m_record;
    // As `dump` writes them.
    std::map<std::string, std::string> m_values;
    std::map<std::string, const void*> m_addresses;
    // They share the names with the record, and are what it was.
    std::vector<std::pair<Record, std::string>> m_copies;
};

TEST(SmartRecord, behavesLikeMaps)
{
    std::mt19937 random(3);
    // With one or two names a record often loses its last entry and gets another one.
    for (const unsigned names : {1U, 2U, 5U, 60U, 3000U}) {
        Twins twins(random, names);
        for (int step = 0; step < 20000; ++step) {
            twins.step();
            if (step % 2000 == 0)
                twins.check();
        }
        twins.check();
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
