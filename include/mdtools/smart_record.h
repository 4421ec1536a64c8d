#pragma once

#include <mdtools/export.h>
#include <mdtools/smart_token.h>

#include <cstddef>
#include <iosfwd>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Tools::Smart {

class Entry;
class Record;
class RecordData;
class Sequence;
class SequenceData;

// What an entry of a record holds. The numbers are fixed; `None` is never stored.
enum class Type : int { None = 0, Text = 1, Decimal = 2, Real = 3, Sequence = 4, Record = 5 };

// The name of a type in messages: "none", "text", "decimal", "real", "Sequence", "Record".
MDTOOLS_API std::string typeName(Type type);

// There is no entry of this name.
class MDTOOLS_API NotAvailable : public std::logic_error {
public:
    explicit NotAvailable(const std::string& name);

    const std::string& getName() const { return m_name; }

protected:
    NotAvailable(const std::string& name, const std::string& message);

private:
    std::string m_name;
};

// The entry has another type than the one asked for.
class MDTOOLS_API WrongType : public NotAvailable {
public:
    WrongType(const std::string& name, Type wanted, Type actual);

    Type getWanted() const { return m_wanted; }
    Type getActual() const { return m_actual; }

private:
    Type m_wanted;
    Type m_actual;
};

// The input breaks the grammar at this token.
class MDTOOLS_API WrongToken : public std::runtime_error {
public:
    WrongToken(Token::Type wanted, const Token& token);

    Token::Type getWanted() const { return m_wanted; }
    Token::Type getActual() const { return m_token.getType(); }
    const Token& getToken() const { return m_token; }

private:
    Token::Type m_wanted;
    Token m_token;
};

// Tags of the plain entry types; `Record` and `Sequence` are their own tags.
struct Text {};
struct Decimal {};
struct Real {};

// The name of an entry together with its type, for Record::operator[]:
//
//     const Property<Text> Title("title");
//     const Property<Real> Length("length");
//     record[Title] = "Main girder";
//     record[Length] = 12.5;
template <class Tag>
class Property {
public:
    explicit Property(std::string name) : m_name(std::move(name)) {}

    const std::string& getName() const { return m_name; }

private:
    std::string m_name;
};

// Records in the order in which they were appended. References to records stay valid while others
// are appended, and so do iterators; end() stays the end. Indexing takes constant time. A copy
// copies all records. Threads as for Record.
class MDTOOLS_API Sequence {
public:
    template <bool IsConst>
    class BasicIterator;
    using iterator = BasicIterator<false>;
    using const_iterator = BasicIterator<true>;
    using value_type = Record;

    Sequence() = default;
    Sequence(const Sequence& other);
    Sequence(Sequence&& other) noexcept : m_data(std::exchange(other.m_data, nullptr)) {}
    Sequence& operator=(const Sequence& other);
    // The other may lie within this one, so this one's content goes last.
    Sequence& operator=(Sequence&& other) noexcept
    {
        Sequence taken(std::move(other));
        std::swap(m_data, taken.m_data);
        return *this;
    }
    ~Sequence()
    {
        if (m_data != nullptr)
            destroy(m_data);
    }

    Sequence& push_back(const Record& record);
    Sequence& push_back(Record&& record);

    std::size_t size() const;
    iterator begin();
    iterator end();
    const_iterator begin() const;
    const_iterator end() const;

    // Throws std::out_of_range if there is no such record. The two messages differ: callers tell by
    // them which of the two was called.
    Record& operator[](std::size_t index);
    const Record& operator[](std::size_t index) const;

    // Reads one sequence in brackets and appends its records. Otherwise as Record::readFrom.
    void readFrom(std::istream& stream);
    void readFrom(IstreamTokenIterator& tokens);

    // As Record::writeTo.
    void writeTo(std::ostream& stream, int level, const std::string& indentUnit) const;

private:
    friend class RecordData;
    friend class SequenceData;

    // Stands for the end in an iterator.
    static constexpr std::size_t End = static_cast<std::size_t>(-1);

    Record* find(std::size_t index) const;
    static void destroy(SequenceData* data) noexcept;

    SequenceData* m_data = nullptr;
};

// A tree of named, typed values: texts, integers ("decimals"), reals, records and sequences of
// records. Names are case-sensitive and unique within a record, whatever their type; iteration and
// output go through them in ascending order of their bytes.
//
// It reads and writes itself as text:
//
//     (
//       count = 3
//       label = "Beam 1"
//       nodes =
//       [
//         (
//           x = 0.5
//         )
//       ]
//     )
//
// References that a getter or an index returns stay valid while other entries come and go, and
// while the entry keeps its type. A copy copies the whole tree. Trees may be nested as deeply as
// memory allows. Names and texts are bytes that are kept, read and written as they are; programs
// agree on their encoding, as a rule the code page (see strings.h).
//
// Several threads may read one record at once; different records are independent of each other,
// copies too.
class MDTOOLS_API Record {
public:
    class Iterator;
    using iterator = Iterator;
    using const_iterator = Iterator;

    Record() = default;
    Record(const Record& other);
    Record(Record&& other) noexcept : m_data(std::exchange(other.m_data, nullptr)) {}
    Record& operator=(const Record& other);
    // The other may lie within this one, so this one's content goes last.
    Record& operator=(Record&& other) noexcept
    {
        Record taken(std::move(other));
        std::swap(m_data, taken.m_data);
        return *this;
    }
    ~Record()
    {
        if (m_data != nullptr)
            destroy(m_data);
    }

    // An entry of this name, of whatever type or of the given one. A decimal counts as a real, too.
    bool exists(std::string_view name) const;
    bool exists(Type type, std::string_view name) const;
    bool existsText(std::string_view name) const;
    bool existsDecimal(std::string_view name) const;
    bool existsReal(std::string_view name) const;
    bool existsRecord(std::string_view name) const;
    bool existsSequence(std::string_view name) const;

    // Throws NotAvailable if there is no such entry.
    Type typeOf(std::string_view name) const;

    // Throw NotAvailable if there is no such entry, WrongType if it has another type. A decimal is
    // also got as a real, because a whole number written without a point reads back as a decimal.
    const std::string& getText(std::string_view name) const;
    int getDecimal(std::string_view name) const;
    double getReal(std::string_view name) const;
    const Record& getRecord(std::string_view name) const;
    const Sequence& getSequence(std::string_view name) const;

    // Each sets the entry to the value and makes it one of that type. With `escapeQuotes` a
    // backslash is put before every double quote of the stored text, as the written form needs it;
    // a backslash itself has no escape, and a text that holds one does not survive a write and a
    // read.
    Record& setText(std::string_view name, std::string text, bool escapeQuotes = true);
    Record& setDecimal(std::string_view name, int value);
    Record& setReal(std::string_view name, double value);
    Record& setRecord(std::string_view name, Record record);
    Record& setSequence(std::string_view name, Sequence sequence);

    // Throws NotAvailable if there is no such entry.
    Record& erase(std::string_view name);

    // For assignment: every call first sets the entry to 0, 0.0 or empty, so the non-const index
    // never reads. A text assigned through it is stored as it is, without escapes.
    std::string& operator[](const Property<Text>& property);
    int& operator[](const Property<Decimal>& property);
    double& operator[](const Property<Real>& property);
    Record& operator[](const Property<Record>& property);
    Sequence& operator[](const Property<Sequence>& property);

    // As the getters.
    const std::string& operator[](const Property<Text>& property) const;
    int operator[](const Property<Decimal>& property) const;
    double operator[](const Property<Real>& property) const;
    const Record& operator[](const Property<Record>& property) const;
    const Sequence& operator[](const Property<Sequence>& property) const;

    // Names and types in ascending order of the names.
    Iterator begin() const;
    Iterator end() const;

    // Reads one record in parentheses. Its entries replace those of the same names; all others
    // stay. A name that occurs twice keeps its last value. From a stream exactly one record is
    // taken, up to its closing parenthesis; an iterator must be on the opening parenthesis and
    // is on the closing one afterwards.
    //
    // Throws WrongToken where the input breaks the grammar; what was read before stays, but for a
    // record or sequence within this one that is not complete. Input that ends too early, or whose
    // next token is invalid, is no error: what was read until then counts.
    void readFrom(std::istream& stream);
    void readFrom(IstreamTokenIterator& tokens);

    // Writes the record, each entry on lines of its own, each line flushed. Lines are indented by
    // `level` times the unit, entries by one more; a unit that holds anything but blanks and tabs
    // does not indent at all. Numbers are formatted by the stream (flags, precision, locale): with
    // its defaults a real has six digits, and 2.0 is written as 2. Texts are written as they are
    // stored. Infinities and NaN do not read back.
    void writeTo(std::ostream& stream, int level, const std::string& indentUnit) const;

private:
    friend class RecordData;
    friend class SequenceData;

    static void destroy(RecordData* data) noexcept;

    RecordData* m_data = nullptr;
};

// Walks through the names of a record, which must outlive it. It may be kept while entries come and
// go, even all of them: it keeps the name that it is on, whose type is None while there is no such
// entry, and an increment goes to the next greater name that is there then.
class MDTOOLS_API Record::Iterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = std::pair<const std::string, Type>;
    using difference_type = std::ptrdiff_t;
    using reference = value_type;

    // The members of the pair. `first` is the iterator's own text: a reference to it stays valid as
    // long as the iterator stays where it is.
    class pointer {
    public:
        struct Members {
            const std::string& first;
            const Type second;
        };

        pointer(const std::string& name, Type type) : m_members{name, type} {}
        const Members* operator->() const { return &m_members; }

    private:
        Members m_members;
    };

    Iterator() = default;

    value_type operator*() const { return {m_name, type()}; }
    pointer operator->() const { return pointer(m_name, type()); }
    Iterator& operator++();
    Iterator operator++(int);

    friend bool operator==(const Iterator& a, const Iterator& b)
    {
        return a.m_atEnd == b.m_atEnd && (a.m_atEnd || a.m_name == b.m_name);
    }

private:
    friend class Record;

    // At the end.
    explicit Iterator(const Record* record) : m_record(record) {}

    void settle(std::size_t block, std::size_t entry);
    const Entry* settled() const;
    Type type() const;

    const Record* m_record = nullptr;
    // Where the name was found; checked before use, because entries move within the record's index.
    std::size_t m_block = 0;
    std::size_t m_entry = 0;
    std::string m_name;
    bool m_atEnd = true;
};

template <bool IsConst>
class Sequence::BasicIterator {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = Record;
    using difference_type = std::ptrdiff_t;
    using pointer = std::conditional_t<IsConst, const Record*, Record*>;
    using reference = std::conditional_t<IsConst, const Record&, Record&>;

    BasicIterator() = default;
    template <bool OtherIsConst>
    requires(IsConst && !OtherIsConst) BasicIterator(const BasicIterator<OtherIsConst>& other)
        : m_sequence(other.m_sequence), m_index(other.m_index)
    {}

    reference operator*() const { return *m_sequence->find(m_index); }
    pointer operator->() const { return m_sequence->find(m_index); }

    BasicIterator& operator++()
    {
        m_index = m_index + 1 < m_sequence->size() ? m_index + 1 : End;
        return *this;
    }
    BasicIterator operator++(int)
    {
        const BasicIterator old = *this;
        ++*this;
        return old;
    }
    BasicIterator& operator--()
    {
        m_index = (m_index == End ? m_sequence->size() : m_index) - 1;
        return *this;
    }
    BasicIterator operator--(int)
    {
        const BasicIterator old = *this;
        --*this;
        return old;
    }

    friend bool operator==(const BasicIterator& a, const BasicIterator& b)
    {
        return a.m_sequence == b.m_sequence && a.m_index == b.m_index;
    }

private:
    friend class Sequence;
    template <bool>
    friend class BasicIterator;

    BasicIterator(const Sequence* sequence, std::size_t index)
        : m_sequence(sequence), m_index(index)
    {}

    const Sequence* m_sequence = nullptr;
    std::size_t m_index = End;
};

}
