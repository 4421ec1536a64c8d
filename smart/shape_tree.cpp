#include "smart/shape_tree.h"

#include "smart/record_data.h"

#include <algorithm>
#include <utility>

namespace Tools::Smart {

std::uint32_t ShapeTree::transition(std::uint32_t shape, std::uint32_t expected,
                                    std::string_view name, Type type)
{
    // Whether its first numbers are reals each record notes itself.
    type = RecordData::indexedType(type, m_shapes[shape].usedCells);
    if (expected != 0 && isReachedBy(expected, name, type))
        return expected;
    const auto found = m_transitions.find(Transition(shape, type, name));
    return found != m_transitions.end() ? found->second : add(shape, name, type);
}

bool ShapeTree::isReachedBy(std::uint32_t shape, std::string_view name, Type type) const
{
    return m_shapes[shape].type == type && m_shapes[shape].name->text() == name;
}

bool ShapeTree::contains(std::uint32_t shape, std::string_view name) const
{
    for (; shape != 0; shape = m_shapes[shape].parent)
        if (m_shapes[shape].name->text() == name)
            return true;
    return false;
}

// The limit of the length also bounds the walk of `contains`.
std::uint32_t ShapeTree::add(std::uint32_t parent, std::string_view name, Type type)
{
    if (m_shapes.size() == MaxShapes || m_shapes[parent].length == MaxLength ||
        contains(parent, name))
        return 0;
    Shape shape;
    shape.name = Name::create(name);
    shape.type = type;
    shape.cell = m_shapes[parent].usedCells;
    shape.usedCells = shape.cell + RecordData::cellsOf(type);
    shape.length = m_shapes[parent].length + 1;
    shape.parent = parent;
    shape.startSize = static_cast<std::uint32_t>(std::min(name.size(), sizeof shape.start));
    name.copy(shape.start, shape.startSize);
    const auto number = static_cast<std::uint32_t>(m_shapes.size());
    const std::string_view ownName = shape.name->text();
    m_shapes.push_back(std::move(shape));
    m_transitions.emplace(Transition(parent, type, ownName), number);
    return number;
}

// Made when the first record ends at the shape: most shapes are only passed through.
Shared<Index> ShapeTree::indexOf(std::uint32_t shape)
{
    if (m_shapes[shape].index)
        return m_shapes[shape].index.take();
    std::vector<Entry> entries;
    entries.reserve(m_shapes[shape].length);
    for (std::uint32_t i = shape; i != 0; i = m_shapes[i].parent)
        entries.emplace_back(m_shapes[i].name, m_shapes[i].type, m_shapes[i].cell);
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.isBefore(Key(b.name())); });
    m_shapes[shape].index =
        OwnerStock<Index>(Index::create(std::move(entries), m_shapes[shape].usedCells));
    return m_shapes[shape].index.take();
}

}
