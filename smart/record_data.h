#pragma once

#include "smart/arena.h"
#include "smart/index.h"

#include <mdtools/smart_record.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace Tools::Smart {

// The unit in which a record's values are laid out. A text takes several in a row.
struct alignas(8) Cell {
    std::byte bytes[8];
};

inline constexpr std::uint32_t TextCells = (sizeof(std::string) + sizeof(Cell) - 1) / sizeof(Cell);

// What a record consists of: the index (shared with all records of the same structure) and its
// values in cells that never move. The first cells follow this object in the same allocation; more
// come in blocks of growing size. A record of eight numbers takes 96 bytes.
//
// Whether a number is a decimal or a real often changes from record to record, because a real
// without fraction is written like a decimal. So for the numbers in the first cells each record
// notes that itself, and the index always calls them decimals. Access to them goes through typeOf
// and setType.
class RecordData {
public:
    // Cells of whose numbers the index does not know whether they are reals.
    static constexpr std::uint32_t FlaggedCells = 32;

    // The values of the index's entries are not there yet: the caller constructs them in their
    // cells.
    static RecordData* allocate(Shared<Index> index, std::uint32_t reals, Arena& arena);
    // With the same entries, all of them empty or zero.
    static RecordData* createLike(const RecordData& other, Arena& arena);

    static RecordData*& of(Record& record) { return record.m_data; }
    static const RecordData* of(const Record& record) { return record.m_data; }

    // The entry's type as the index holds it.
    static Type indexedType(Type type, std::uint32_t cell)
    {
        return type == Type::Real && cell < FlaggedCells ? Type::Decimal : type;
    }
    // The bit that says that the number in that cell is a real; none if the index says it.
    static std::uint32_t realFlag(std::uint32_t cell)
    {
        return cell < FlaggedCells ? std::uint32_t{1} << cell : 0;
    }
    static std::uint32_t cellsOf(Type type) { return type == Type::Text ? TextCells : 1; }

    const Index& index() const { return *m_index; }
    Type typeOf(const Entry& entry) const
    {
        if (entry.type() == Type::Decimal && (m_layout.reals & realFlag(entry.cell())) != 0)
            return Type::Real;
        return entry.type();
    }
    Cell* cellAt(std::uint32_t cell) const
    {
        return m_newest == nullptr ? inlineCell(cell) : cellInBlocks(cell);
    }
    // For a cell that surely follows this object.
    Cell* inlineCell(std::uint32_t cell) const
    {
        return reinterpret_cast<Cell*>(const_cast<RecordData*>(this) + 1) + cell;
    }
    template <class T>
    T& value(const Entry& entry) const
    {
        return *std::launder(reinterpret_cast<T*>(cellAt(entry.cell())));
    }

    // The value of the entry of that name and type for `record`. A missing entry is made, one of
    // another type is replaced by an empty one.
    template <class T>
    static T& provide(Record& record, std::string_view name, Type type)
    {
        return *std::launder(reinterpret_cast<T*>(provideCell(record, name, type)));
    }
    // There is an entry of that name.
    static void erase(Record& record, std::string_view name);

    // `target` is empty. However deep the tree is, the stack is not.
    static void copy(const Record& source, Record& target);
    static void copy(const Sequence& source, Sequence& target);
    static void destroy(RecordData* data) noexcept;
    static void destroy(SequenceData* data) noexcept;

    // Lets `record` share the index of `model` if they have the same structure, and does so for the
    // records in it, `depth` levels down.
    static void shareIndex(Record& record, const Record& model, int depth);

private:
    friend class Release;

    struct Block {
        Block* older;
        std::uint32_t firstCell;
        std::uint32_t cells;
    };

    RecordData(Shared<Index> index, Shared<ArenaPage> page, std::uint32_t cells,
               std::uint32_t reals)
        : m_index(std::move(index)), m_page(std::move(page)), m_layout{cells, reals}
    {}
    ~RecordData() = default;
    static RecordData* allocate(Shared<Index> index, std::uint32_t cells, std::uint32_t reals);
    static void free(RecordData* data, OwnerReturn<Index>& indexes,
                     OwnerReturn<ArenaPage>& pages) noexcept;

    static Cell* provideCell(Record& record, std::string_view name, Type type);
    Cell* insertValue(std::string_view name, Type type);
    Cell* changeType(std::string_view name, Type type);

    Cell* cellInBlocks(std::uint32_t cell) const;
    std::uint32_t capacity() const;
    std::uint32_t allocateCells(Type type);
    void addBlock();
    void makeIndexOwn();
    void setType(Entry& entry, Type type, std::uint32_t cell);
    void flagReal(std::uint32_t cell, bool isReal);
    Cell* construct(Type type, std::uint32_t cell);
    void destroyValue(const Entry& entry);

    Shared<Index> m_index;
    Block* m_newest = nullptr;
    // Where this object lies; null if it has an allocation of its own.
    Shared<ArenaPage> m_page;
    struct Layout {
        std::uint32_t inlineCells;
        // Bit n is set if the number in cell n is a real.
        std::uint32_t reals;
    };
    union {
        Layout m_layout;
        // While this object waits for its destruction: the one that waits behind it. Neither the
        // number of cells nor the kind of a number matters any more by then.
        RecordData* m_waiting;
    };
};

// The records of a sequence: a segmented array, whose blocks of doubling size never move, so that
// references stay and an index takes constant time.
class SequenceData {
public:
    static SequenceData*& of(Sequence& sequence) { return sequence.m_data; }
    static const SequenceData* of(const Sequence& sequence) { return sequence.m_data; }

    std::size_t size() const { return m_size; }
    Record& at(std::size_t index) const;
    // Appends an empty record.
    Record& append();
    static Record& append(Sequence& sequence);

private:
    std::vector<std::unique_ptr<Record[]>> m_blocks;
    std::size_t m_size = 0;
};

}
