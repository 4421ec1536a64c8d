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

// True if the entry is still where it was found.
bool Record::Iterator::isSettled() const
{
    const Entry* entry = m_record->m_data->index().at({m_block, m_entry});
    return entry != nullptr && entry->name() == m_name;
}

Record::Iterator::value_type Record::Iterator::operator*() const
{
    const RecordData& data = *m_record->m_data;
    const Entry* entry =
        isSettled() ? data.index().at({m_block, m_entry}) : data.index().find(m_name);
    return {m_name, entry != nullptr ? data.typeOf(*entry) : Type::None};
}

Record::Iterator& Record::Iterator::operator++()
{
    if (m_record->m_data == nullptr) {
        m_atEnd = true;
        return *this;
    }
    const Index& index = m_record->m_data->index();
    Index::Position position{m_block, m_entry};
    if (!isSettled())
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
