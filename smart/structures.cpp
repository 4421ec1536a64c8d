#include "smart/structures.h"

#include "smart/record_data.h"

#include <algorithm>
#include <utility>

namespace Tools::Smart {

std::uint32_t Structures::step(std::uint32_t node, std::uint32_t expected, std::string_view name,
                               Type type)
{
    type = RecordData::indexedType(type, m_nodes[node].usedCells);
    std::uint32_t next = 0;
    if (expected != 0 && isStep(expected, name, type)) {
        next = expected;
    } else {
        const auto found = m_steps.find(Step(node, type, name));
        next = found != m_steps.end() ? found->second : add(node, name, type);
    }
    return next;
}

bool Structures::isStep(std::uint32_t node, std::string_view name, Type type) const
{
    return m_nodes[node].type == type && m_nodes[node].name->text() == name;
}

bool Structures::contains(std::uint32_t node, std::string_view name) const
{
    for (; node != 0; node = m_nodes[node].parent)
        if (m_nodes[node].name->text() == name)
            return true;
    return false;
}

std::uint32_t Structures::add(std::uint32_t parent, std::string_view name, Type type)
{
    if (m_nodes.size() == MaxNodes || m_nodes[parent].length == MaxLength || contains(parent, name))
        return 0;
    Node node;
    node.name = Name::create(name);
    node.type = type;
    node.cell = m_nodes[parent].usedCells;
    node.usedCells = node.cell + RecordData::cellsOf(type);
    node.length = m_nodes[parent].length + 1;
    node.parent = parent;
    node.startSize = static_cast<std::uint32_t>(std::min(name.size(), sizeof node.start));
    name.copy(node.start, node.startSize);
    const auto number = static_cast<std::uint32_t>(m_nodes.size());
    const std::string_view ownName = node.name->text();
    m_nodes.push_back(std::move(node));
    m_steps.emplace(Step(parent, type, ownName), number);
    return number;
}

Shared<Index> Structures::indexOf(std::uint32_t node)
{
    if (m_nodes[node].index)
        return m_nodes[node].index.take();
    std::vector<Entry> entries;
    entries.reserve(m_nodes[node].length);
    for (std::uint32_t i = node; i != 0; i = m_nodes[i].parent)
        entries.emplace_back(m_nodes[i].name, m_nodes[i].type, m_nodes[i].cell);
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.isBefore(Key(b.name())); });
    m_nodes[node].index =
        OwnerStock<Index>(Index::create(std::move(entries), m_nodes[node].usedCells));
    return m_nodes[node].index.take();
}

}
