#include <mdtools/smart_record.h>

#include "smart/record_data.h"

namespace Tools::Smart {

// An iterator holds the name, which always finds its way, and a position as a short cut.
void Record::Iterator::settle(std::size_t block, std::size_t entry)
{
    const Entry* found = nullptr;
    if (m_record->m_data != nullptr)
        found = m_record->m_data->index().at({block, entry});
    m_atEnd = found == nullptr;
    m_block = block;
    m_entry = entry;
    if (found != nullptr)
        m_name = found->name();
}

// The entry where it was found, if it is still there; else null.
const Entry* Record::Iterator::settled() const
{
    const Entry* entry = m_record->m_data->index().at({m_block, m_entry});
    return entry != nullptr && entry->name() == m_name ? entry : nullptr;
}

// The record may have lost the entry since, and all others, too.
Type Record::Iterator::type() const
{
    if (m_record->m_data == nullptr)
        return Type::None;
    const Entry* entry = settled();
    if (entry == nullptr)
        entry = m_record->m_data->index().find(m_name);
    return entry != nullptr ? m_record->m_data->typeOf(*entry) : Type::None;
}

Record::Iterator& Record::Iterator::operator++()
{
    if (m_record->m_data == nullptr) {
        m_atEnd = true;
        return *this;
    }
    const Index& index = m_record->m_data->index();
    Index::Position position{m_block, m_entry};
    if (settled() == nullptr)
        position = index.lowerBound(Key(m_name));
    const Entry* entry = index.at(position);
    if (entry != nullptr && entry->name() == m_name)
        position = index.next(position);
    settle(position.block, position.entry);
    return *this;
}

Record::Iterator Record::Iterator::operator++(int)
{
    Iterator old = *this;
    ++*this;
    return old;
}

}
