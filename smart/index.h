#pragma once

#include "smart/shared.h"

#include <mdtools/smart_record.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace Tools::Smart {

// The text of an entry's name, in one allocation with its owner count. Never changes.
class Name : public SharedObject {
public:
    static Shared<Name> create(std::string_view text);
    static void destroy(Name* name);

    std::string_view text() const { return {reinterpret_cast<const char*>(this + 1), m_size}; }

private:
    explicit Name(std::size_t size) : m_size(size) {}

    std::size_t m_size;
};

// A name being looked for. Its first four bytes decide most comparisons without touching the text.
struct Key {
    explicit Key(std::string_view text);

    std::string_view text;
    std::uint32_t start;
};

// One entry of a record but for its value: the name, the type, and the number of the first of the
// record's cells that hold the value.
class Entry {
public:
    Entry(Shared<Name> name, Type type, std::uint32_t cell);

    static constexpr std::uint32_t MaxCell = (1U << 29) - 1;

    std::string_view name() const { return m_name->text(); }
    Type type() const { return static_cast<Type>(m_place & 7U); }
    std::uint32_t cell() const { return m_place >> 3; }
    void setPlace(Type type, std::uint32_t cell);

    bool isBefore(const Key& key) const
    {
        return m_start != key.start ? m_start < key.start : name() < key.text;
    }
    bool equals(const Entry& other) const;

private:
    Shared<Name> m_name;
    std::uint32_t m_start;
    std::uint32_t m_place;
};

// Which entries a record has, in ascending order of their names, and which of its cells they use.
// Records of the same structure share one index, so it is only changed by a record that owns it
// alone (SharedObject::hasOneOwner).
//
// A B-tree of two levels: the entries are in sorted blocks of limited size. Appending in order
// costs constant time, and an insertion elsewhere moves no more than one block, so that no order of
// insertion becomes quadratic.
class Index : public SharedObject {
public:
    using Block = std::vector<Entry>;
    struct Position {
        std::size_t block;
        std::size_t entry;
    };

    static void destroy(Index* index) { delete index; }

    // From entries in ascending order that use the first `usedCells` cells.
    static Shared<Index> create(std::vector<Entry> entries, std::uint32_t usedCells);

    bool isEmpty() const { return m_blocks.empty(); }
    const std::vector<Block>& blocks() const { return m_blocks; }

    // The entry at the position, null after the last one.
    const Entry* at(Position position) const;
    Position next(Position position) const;
    // The first entry that is not before the key.
    Position lowerBound(const Key& key) const;
    // Null if there is no such entry.
    const Entry* find(std::string_view name) const;
    Entry* find(std::string_view name);
    // Same entries in the same cells.
    bool equals(const Index& other) const;

    // There is no entry of that name yet.
    Entry& insert(Entry entry);
    // There is an entry of that name.
    void erase(std::string_view name);

    // Cells below this number are in use or free to be used again.
    std::uint32_t usedCells() const { return m_usedCells; }
    void setUsedCells(std::uint32_t cells) { m_usedCells = cells; }
    // Gives back cells of an erased value: of a text, or a single one.
    void releaseCells(std::uint32_t cell, bool ofText);
    // Takes released cells; false if there are none.
    bool reuseCells(std::uint32_t& cell, bool forText);

private:
    struct FreeCells {
        std::vector<std::uint32_t> single;
        std::vector<std::uint32_t> ofTexts;
    };

    Index() = default;
    Index(const Index& other);
    friend class RecordData;

    Entry& append(Entry entry);
    void split(std::size_t block);

    std::vector<Block> m_blocks;
    std::unique_ptr<FreeCells> m_free;
    std::uint32_t m_usedCells = 0;
};

}
