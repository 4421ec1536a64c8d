#include "smart/record_data.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

namespace Tools::Smart {

namespace {

constexpr std::uint32_t FirstCells = 8;
constexpr std::size_t FirstRecords = 4;

// Trees up to this depth are copied and destroyed by recursion; what lies deeper waits in a list,
// which is one of links in the records themselves where they are destroyed.
constexpr int MaxDepth = 40;

}

// For a record that grows entry by entry.
RecordData* RecordData::allocate(Shared<Index> index, std::uint32_t cells, std::uint32_t reals)
{
    void* memory = ::operator new(sizeof(RecordData) + sizeof(Cell) * cells);
    return new (memory) RecordData(std::move(index), Shared<ArenaPage>(), cells, reals);
}

// For a record whose entries are known: just the cells that they take.
RecordData* RecordData::allocate(Shared<Index> index, std::uint32_t reals, Arena& arena)
{
    const std::uint32_t cells = index->usedCells();
    Shared<ArenaPage> page;
    void* memory = arena.allocate(sizeof(RecordData) + sizeof(Cell) * cells, page);
    return new (memory) RecordData(std::move(index), std::move(page), cells, reals);
}

// The values are gone. Owners go in batches: the records of a tree mostly share index and page.
void RecordData::free(RecordData* data, OwnerReturn<Index>& indexes,
                      OwnerReturn<ArenaPage>& pages) noexcept
{
    for (Block* block = data->m_newest; block != nullptr;) {
        Block* older = block->older;
        ::operator delete(block);
        block = older;
    }
    ArenaPage* page = data->m_page.release();
    indexes.add(data->m_index.release());
    data->~RecordData();
    if (page != nullptr)
        pages.add(page);
    else
        ::operator delete(data);
}

// Shares the index: a copy costs no names.
RecordData* RecordData::createLike(const RecordData& other, Arena& arena)
{
    RecordData* data = allocate(other.m_index, other.m_layout.reals, arena);
    for (const Index::Block& block : data->index().blocks())
        for (const Entry& entry : block)
            data->construct(data->typeOf(entry), entry.cell());
    return data;
}

// Nothing to note where the index holds the type of the number itself.
void RecordData::flagReal(std::uint32_t cell, bool isReal)
{
    std::uint32_t& reals = m_layout.reals;
    reals = isReal ? reals | realFlag(cell) : reals & ~realFlag(cell);
}

void RecordData::setType(Entry& entry, Type type, std::uint32_t cell)
{
    entry.setPlace(indexedType(type, cell), cell);
    flagReal(cell, type == Type::Real);
}

// The newest block is the largest one, so that half of the cells are found at once.
Cell* RecordData::cellInBlocks(std::uint32_t cell) const
{
    for (Block* block = m_newest; block != nullptr; block = block->older)
        if (cell >= block->firstCell)
            return reinterpret_cast<Cell*>(block + 1) + (cell - block->firstCell);
    return inlineCell(cell);
}

std::uint32_t RecordData::capacity() const
{
    return m_newest != nullptr ? m_newest->firstCell + m_newest->cells : m_layout.inlineCells;
}

// As many cells as there are already, so that blocks double.
void RecordData::addBlock()
{
    const std::uint32_t firstCell = capacity();
    const std::uint32_t cells = std::max(firstCell, 2 * FirstCells);
    if (firstCell > Entry::MaxCell)
        throw std::length_error("Record too long");
    void* memory = ::operator new (sizeof(Block) + sizeof(Cell) * std::size_t{cells});
    m_newest = new (memory) Block{m_newest, firstCell, cells};
}

// Only for a record that owns its index alone.
std::uint32_t RecordData::allocateCells(Type type)
{
    const std::uint32_t cells = cellsOf(type);
    std::uint32_t cell = 0;
    if (m_index->reuseCells(cell, type == Type::Text))
        return cell;
    cell = m_index->usedCells();
    if (cell + cells > capacity()) {
        // A text does not fit in the rest of the block; single cells will.
        for (const std::uint32_t end = capacity(); cell < end; ++cell)
            m_index->releaseCells(cell, false);
        addBlock();
        m_index->setUsedCells(cell);
    }
    m_index->setUsedCells(cell + cells);
    return cell;
}

// Copy on write: the index of several records is never changed.
void RecordData::makeIndexOwn()
{
    if (!m_index->hasOneOwner())
        m_index = Shared<Index>(new Index(*m_index));
}

// Empty or zero.
Cell* RecordData::construct(Type type, std::uint32_t cell)
{
    Cell* address = cellAt(cell);
    switch (type) {
    case Type::Text:
        new (address) std::string;
        break;
    case Type::Sequence:
        new (address) Sequence;
        break;
    case Type::Record:
        new (address) Record;
        break;
    case Type::Real:
        new (address) double(0.0);
        break;
    default:
        new (address) int(0);
        break;
    }
    return address;
}

void RecordData::destroyValue(const Entry& entry)
{
    switch (entry.type()) {
    case Type::Text:
        value<std::string>(entry).~basic_string();
        break;
    case Type::Sequence:
        value<Sequence>(entry).~Sequence();
        break;
    case Type::Record:
        value<Record>(entry).~Record();
        break;
    default:
        break;
    }
}

// Looks the name up once where the entry is there and keeps its type.
Cell* RecordData::provideCell(Record& record, std::string_view name, Type type)
{
    RecordData*& data = of(record);
    if (data == nullptr)
        data = allocate(Shared<Index>(new Index), FirstCells, 0);
    const Entry* entry = data->index().find(name);
    if (entry == nullptr)
        return data->insertValue(name, type);
    if (data->typeOf(*entry) == type)
        return data->cellAt(entry->cell());
    return data->changeType(name, type);
}

Cell* RecordData::insertValue(std::string_view name, Type type)
{
    makeIndexOwn();
    const Shared<Name> shared = Name::create(name);
    const std::uint32_t cell = allocateCells(type);
    m_index->insert(Entry(shared, indexedType(type, cell), cell));
    flagReal(cell, type == Type::Real);
    return construct(type, cell);
}

// `name` may be a text that lies in the entry's old value, so it is not used any more once that is
// gone.
Cell* RecordData::changeType(std::string_view name, Type type)
{
    const std::uint32_t oldCell = index().find(name)->cell();
    const Type oldType = index().find(name)->type();
    if (indexedType(type, oldCell) == oldType) {
        flagReal(oldCell, type == Type::Real);
        return construct(type, oldCell);
    }
    makeIndexOwn();
    Entry& entry = *m_index->find(name);
    std::uint32_t cell = oldCell;
    if (cellsOf(type) != cellsOf(oldType)) {
        cell = allocateCells(type);
        m_index->releaseCells(oldCell, oldType == Type::Text);
    }
    destroyValue(entry);
    setType(entry, type, cell);
    return construct(type, cell);
}

void RecordData::erase(Record& record, std::string_view name)
{
    RecordData* data = of(record);
    data->makeIndexOwn();
    // The copy keeps the name alive: `name` may be a text that lies in the entry's value.
    const Entry entry = *data->index().find(name);
    data->m_index->releaseCells(entry.cell(), entry.type() == Type::Text);
    data->destroyValue(entry);
    data->m_index->erase(entry.name());
    if (data->index().isEmpty())
        record = Record();
}

// Equal lists in equal cells: only then may one index serve for both.
void RecordData::shareIndex(Record& record, const Record& model, int depth)
{
    RecordData* data = of(record);
    const RecordData* other = of(model);
    if (data == nullptr || other == nullptr)
        return;
    if (data->m_index.get() != other->m_index.get()) {
        if (!data->index().equals(other->index()))
            return;
        data->m_index = other->m_index;
    }
    if (depth == 0)
        return;
    for (const Index::Block& block : data->index().blocks())
        for (const Entry& entry : block)
            if (entry.type() == Type::Record)
                shareIndex(data->value<Record>(entry), other->value<Record>(entry), depth - 1);
}

// Copies a tree. A copy is complete and valid, only with empty values, before its values are
// filled in; so whatever fails, there is nothing that the target would not clean up.
class Copy {
public:
    template <class T>
    static void run(const T& source, T& target)
    {
        Copy copy;
        copy.copy(source, target, 0);
        while (!copy.m_waiting.empty()) {
            const Task task = copy.m_waiting.back();
            copy.m_waiting.pop_back();
            copy.copy(*task.source, *task.target, 0);
        }
    }

private:
    struct Task {
        const Record* source;
        Record* target;
    };

    void copy(const Record& source, Record& target, int depth);
    void copy(const Sequence& source, Sequence& target, int depth);
    void copyValue(const RecordData& from, const RecordData& to, const Entry& entry, int depth);

    std::vector<Task> m_waiting;
    Arena m_arena;
};

void Copy::copy(const Record& source, Record& target, int depth)
{
    const RecordData* from = RecordData::of(source);
    if (from == nullptr)
        return;
    if (depth > MaxDepth) {
        m_waiting.push_back({&source, &target});
        return;
    }
    const RecordData* to = RecordData::of(target) = RecordData::createLike(*from, m_arena);
    for (const Index::Block& block : from->index().blocks())
        for (const Entry& entry : block)
            copyValue(*from, *to, entry, depth);
}

void Copy::copy(const Sequence& source, Sequence& target, int depth)
{
    const SequenceData* from = SequenceData::of(source);
    for (std::size_t i = 0; i < source.size(); ++i)
        copy(from->at(i), SequenceData::append(target), depth + 1);
}

void Copy::copyValue(const RecordData& from, const RecordData& to, const Entry& entry, int depth)
{
    switch (entry.type()) {
    case Type::Text:
        to.value<std::string>(entry) = from.value<std::string>(entry);
        break;
    case Type::Sequence:
        copy(from.value<Sequence>(entry), to.value<Sequence>(entry), depth + 1);
        break;
    case Type::Record:
        copy(from.value<Record>(entry), to.value<Record>(entry), depth + 1);
        break;
    default:
        std::memcpy(&to.value<Cell>(entry), &from.value<Cell>(entry), sizeof(Cell));
        break;
    }
}

void RecordData::copy(const Record& source, Record& target)
{
    Copy::run(source, target);
}

void RecordData::copy(const Sequence& source, Sequence& target)
{
    Copy::run(source, target);
}

// Destroys a tree without deep recursion and without memory.
class Release {
public:
    void run(RecordData* data)
    {
        release(data, 0);
        finish();
    }
    void run(SequenceData* data)
    {
        release(data, 0);
        finish();
    }

private:
    void finish()
    {
        while (m_first != nullptr) {
            RecordData* const data = std::exchange(m_first, m_first->m_waiting);
            release(data, 0);
        }
    }
    void release(RecordData* data, int depth);
    void release(SequenceData* data, int depth);
    void releaseValue(const RecordData& data, const Entry& entry, int depth);

    // Of those that wait.
    RecordData* m_first = nullptr;
    // Records within others usually have another index than those around them.
    OwnerReturn<Index> m_indexes[2];
    OwnerReturn<ArenaPage> m_pages;
};

void Release::release(RecordData* data, int depth)
{
    if (data == nullptr)
        return;
    if (depth > MaxDepth) {
        data->m_waiting = std::exchange(m_first, data);
        return;
    }
    for (const Index::Block& block : data->index().blocks())
        for (const Entry& entry : block)
            releaseValue(*data, entry, depth);
    RecordData::free(data, m_indexes[depth % 2], m_pages);
}

void Release::release(SequenceData* data, int depth)
{
    if (data == nullptr)
        return;
    for (std::size_t i = 0; i < data->size(); ++i)
        release(std::exchange(RecordData::of(data->at(i)), nullptr), depth + 1);
    delete data;
}

void Release::releaseValue(const RecordData& data, const Entry& entry, int depth)
{
    switch (entry.type()) {
    case Type::Text:
        data.value<std::string>(entry).~basic_string();
        break;
    case Type::Sequence:
        release(SequenceData::of(data.value<Sequence>(entry)), depth + 1);
        break;
    case Type::Record:
        release(RecordData::of(data.value<Record>(entry)), depth + 1);
        break;
    default:
        break;
    }
}

void RecordData::destroy(RecordData* data) noexcept
{
    Release().run(data);
}

void RecordData::destroy(SequenceData* data) noexcept
{
    Release().run(data);
}

Record& SequenceData::at(std::size_t index) const
{
    // Block n holds FirstRecords * 2^n records, so it begins FirstRecords before that number.
    const std::size_t size = std::bit_floor(index + FirstRecords);
    const auto block = static_cast<std::size_t>(std::countr_zero(size / FirstRecords));
    return m_blocks[block][index + FirstRecords - size];
}

Record& SequenceData::append()
{
    const std::size_t capacity = FirstRecords * ((std::size_t{1} << m_blocks.size()) - 1);
    if (m_size == capacity)
        m_blocks.push_back(std::make_unique<Record[]>(FirstRecords << m_blocks.size()));
    return at(m_size++);
}

Record& SequenceData::append(Sequence& sequence)
{
    if (of(sequence) == nullptr)
        of(sequence) = new SequenceData;
    return of(sequence)->append();
}

}
