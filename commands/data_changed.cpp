#include <mdtools/data_changed.h>

#include <algorithm>

namespace Tools {

DataChangedArgument::~DataChangedArgument() = default;
DataChangedHandler::~DataChangedHandler() = default;
DataChangedManager::~DataChangedManager() = default;

DataChangedManager& DataChangedManager::operator=(const DataChangedManager& other)
{
    m_handlers = other.m_handlers;
    ++m_changes;
    return *this;
}

void DataChangedManager::addDataChangedHandler(DataChangedHandler* handler)
{
    const auto position =
        std::lower_bound(m_handlers.begin(), m_handlers.end(), handler, std::less<>());
    if (handler == nullptr || (position != m_handlers.end() && *position == handler))
        return;
    m_handlers.insert(position, handler);
    ++m_changes;
}

void DataChangedManager::removeDataChangedHandler(DataChangedHandler* handler)
{
    const auto position =
        std::lower_bound(m_handlers.begin(), m_handlers.end(), handler, std::less<>());
    if (position == m_handlers.end() || *position != handler)
        return;
    m_handlers.erase(position);
    ++m_changes;
}

// The handlers are a sorted array. While nobody comes or goes a round is a plain loop over it; the
// count of changes shows when that is over, also within a nested round that changes it back.
void DataChangedManager::invokeDataChanged(const DataChangedArgument* argument)
{
    const std::uint64_t changes = m_changes;
    DataChangedHandler* const* const end = m_handlers.data() + m_handlers.size();
    for (DataChangedHandler* const* position = m_handlers.data(); position != end; ++position) {
        DataChangedHandler* const handler = *position;
        handler->dataChanged(argument);
        if (m_changes != changes) {
            invokeAfter(handler, argument);
            return;
        }
    }
}

// The order by address says who is next, whoever came and went.
void DataChangedManager::invokeAfter(DataChangedHandler* handler,
                                     const DataChangedArgument* argument)
{
    for (;;) {
        const auto next =
            std::upper_bound(m_handlers.begin(), m_handlers.end(), handler, std::less<>());
        if (next == m_handlers.end())
            return;
        handler = *next;
        handler->dataChanged(argument);
    }
}

}
