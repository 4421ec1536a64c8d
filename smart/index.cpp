#include "smart/index.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <stdexcept>
#include <utility>

namespace Tools::Smart {

namespace {

// Large enough to keep the list of blocks short, small enough to move half of it cheaply.
constexpr std::size_t BlockSize = 128;

// The first four bytes as a number that orders as the bytes do. Shorter texts are filled up with
// zeros, the smallest byte, so that they never come out after a longer text that begins with them.
std::uint32_t startOf(std::string_view text)
{
    std::uint32_t start = 0;
    for (std::size_t i = 0; i < 4; ++i)
        start = start << 8 | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0U);
    return start;
}

}

// The text follows the object in the same allocation.
Shared<Name> Name::create(std::string_view text)
{
    void* memory = ::operator new(sizeof(Name) + text.size());
    Name* name = new (memory) Name(text.size());
    if (!text.empty())
        std::memcpy(static_cast<void*>(name + 1), text.data(), text.size());
    return Shared<Name>(name);
}

void Name::destroy(Name* name)
{
    name->~Name();
    ::operator delete(name);
}

Key::Key(std::string_view t) : text(t), start(startOf(t)) {}

Entry::Entry(Shared<Name> name, Type type, std::uint32_t cell)
    : m_name(std::move(name)), m_start(startOf(m_name->text())), m_place(0)
{
    setPlace(type, cell);
}

void Entry::setPlace(Type type, std::uint32_t cell)
{
    if (cell > MaxCell)
        throw std::length_error("Record too long");
    m_place = cell << 3 | static_cast<std::uint32_t>(type);
}

bool Entry::equals(const Entry& other) const
{
    return m_place == other.m_place && m_start == other.m_start && name() == other.name();
}

Shared<Index> Index::create(std::vector<Entry> entries, std::uint32_t usedCells)
{
    Shared<Index> index(new Index);
    index->m_usedCells = usedCells;
    for (std::size_t i = 0; i < entries.size(); i += BlockSize) {
        const auto first =
            std::make_move_iterator(entries.begin() + static_cast<std::ptrdiff_t>(i));
        const std::size_t count = std::min(BlockSize, entries.size() - i);
        index->m_blocks.emplace_back(first, first + static_cast<std::ptrdiff_t>(count));
    }
    return index;
}

Index::Index(const Index& other)
    : SharedObject(other),
      m_blocks(other.m_blocks),
      m_free(other.m_free ? std::make_unique<FreeCells>(*other.m_free) : nullptr),
      m_usedCells(other.m_usedCells)
{}

const Entry* Index::at(Position position) const
{
    if (position.block >= m_blocks.size() || position.entry >= m_blocks[position.block].size())
        return nullptr;
    return &m_blocks[position.block][position.entry];
}

Index::Position Index::next(Position position) const
{
    if (position.entry + 1 < m_blocks[position.block].size())
        return {position.block, position.entry + 1};
    return {position.block + 1, 0};
}

// A binary search for the block, by the last entry of each, and another one within it.
Index::Position Index::lowerBound(const Key& key) const
{
    const auto isBlockBefore = [](const Block& b, const Key& k) { return b.back().isBefore(k); };
    const auto isBefore = [](const Entry& e, const Key& k) { return e.isBefore(k); };
    auto block = m_blocks.begin();
    if (m_blocks.size() != 1)
        block = std::lower_bound(block, m_blocks.end(), key, isBlockBefore);
    if (block == m_blocks.end())
        return {m_blocks.size(), 0};
    const auto entry = std::lower_bound(block->begin(), block->end(), key, isBefore);
    return {static_cast<std::size_t>(block - m_blocks.begin()),
            static_cast<std::size_t>(entry - block->begin())};
}

const Entry* Index::find(std::string_view name) const
{
    const Entry* entry = at(lowerBound(Key(name)));
    return entry != nullptr && entry->name() == name ? entry : nullptr;
}

Entry* Index::find(std::string_view name)
{
    return const_cast<Entry*>(std::as_const(*this).find(name));
}

bool Index::equals(const Index& other) const
{
    const auto sameBlock = [](const Block& a, const Block& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [](const Entry& x, const Entry& y) { return x.equals(y); });
    };
    return m_usedCells == other.m_usedCells && !m_free && !other.m_free &&
           std::equal(m_blocks.begin(), m_blocks.end(), other.m_blocks.begin(),
                      other.m_blocks.end(), sameBlock);
}

// Names that come in order never need the search.
Entry& Index::insert(Entry entry)
{
    const Key key(entry.name());
    if (m_blocks.empty() || m_blocks.back().back().isBefore(key))
        return append(std::move(entry));
    const Position position = lowerBound(key);
    Block& block = m_blocks[position.block];
    if (block.size() == BlockSize) {
        split(position.block);
        return insert(std::move(entry));
    }
    const auto place = block.begin() + static_cast<std::ptrdiff_t>(position.entry);
    return *block.insert(place, std::move(entry));
}

// Opens a new block instead of splitting a full one: leaves the blocks full when names come in
// order.
Entry& Index::append(Entry entry)
{
    if (!m_blocks.empty() && m_blocks.back().size() < BlockSize)
        return m_blocks.back().emplace_back(std::move(entry));
    Block block;
    block.push_back(std::move(entry));
    return m_blocks.emplace_back(std::move(block)).back();
}

// The block's upper half becomes the next block.
void Index::split(std::size_t block)
{
    Block upper;
    upper.reserve(BlockSize);
    m_blocks.insert(m_blocks.begin() + static_cast<std::ptrdiff_t>(block) + 1, std::move(upper));
    Block& lower = m_blocks[block];
    const auto middle = lower.begin() + BlockSize / 2;
    m_blocks[block + 1].assign(std::make_move_iterator(middle),
                               std::make_move_iterator(lower.end()));
    lower.erase(middle, lower.end());
}

void Index::erase(std::string_view name)
{
    const Position position = lowerBound(Key(name));
    Block& block = m_blocks[position.block];
    block.erase(block.begin() + static_cast<std::ptrdiff_t>(position.entry));
    const auto here = m_blocks.begin() + static_cast<std::ptrdiff_t>(position.block);
    if (block.empty()) {
        m_blocks.erase(here);
        return;
    }
    // Neighbours that have become small are joined, so that few entries never hold many blocks.
    if (position.block + 1 == m_blocks.size())
        return;
    Block& upper = m_blocks[position.block + 1];
    if (block.size() + upper.size() > BlockSize / 4)
        return;
    block.insert(block.end(), std::make_move_iterator(upper.begin()),
                 std::make_move_iterator(upper.end()));
    m_blocks.erase(here + 1);
}

// Free lists, one a size.
void Index::releaseCells(std::uint32_t cell, bool ofText)
{
    if (!m_free)
        m_free = std::make_unique<FreeCells>();
    (ofText ? m_free->ofTexts : m_free->single).push_back(cell);
}

bool Index::reuseCells(std::uint32_t& cell, bool forText)
{
    if (!m_free)
        return false;
    std::vector<std::uint32_t>& cells = forText ? m_free->ofTexts : m_free->single;
    if (cells.empty())
        return false;
    cell = cells.back();
    cells.pop_back();
    return true;
}

}
