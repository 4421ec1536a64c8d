#include <mdtools/data_changed.h>

#include <algorithm>

namespace Tools {

DataChangedArgument::DataChangedArgument() = default;
DataChangedArgument::DataChangedArgument(const DataChangedArgument&) = default;
DataChangedArgument& DataChangedArgument::operator=(const DataChangedArgument&) = default;
DataChangedArgument::~DataChangedArgument() = default;

DataChangedHandler::DataChangedHandler() = default;
DataChangedHandler::DataChangedHandler(const DataChangedHandler&) = default;
DataChangedHandler& DataChangedHandler::operator=(const DataChangedHandler&) = default;
DataChangedHandler::~DataChangedHandler() = default;

DataChangedManager::DataChangedManager() = default;
DataChangedManager::DataChangedManager(const DataChangedManager&) = default;
DataChangedManager::~DataChangedManager() = default;

DataChangedManager& DataChangedManager::operator=(const DataChangedManager& other)
{
    m_handlers = other.m_handlers;
    ++m_changes;
    return *this;
}

void DataChangedManager::addDataChangedHandler(DataChangedHandler* handler)
{
    const auto place =
        std::lower_bound(m_handlers.begin(), m_handlers.end(), handler, std::less<>());
    if (handler == nullptr || (place != m_handlers.end() && *place == handler))
        return;
    m_handlers.insert(place, handler);
    ++m_changes;
}

void DataChangedManager::removeDataChangedHandler(DataChangedHandler* handler)
{
    const auto place =
        std::lower_bound(m_handlers.begin(), m_handlers.end(), handler, std::less<>());
    if (place == m_handlers.end() || *place != handler)
        return;
    m_handlers.erase(place);
    ++m_changes;
}

void DataChangedManager::invokeDataChanged(const DataChangedArgument* argument)
{
    const std::uint64_t changes = m_changes;
    DataChangedHandler* const* const end = m_handlers.data() + m_handlers.size();
    for (DataChangedHandler* const* place = m_handlers.data(); place != end; ++place) {
        DataChangedHandler* const handler = *place;
        handler->dataChanged(argument);
        if (m_changes != changes) {
            invokeBehind(handler, argument);
            return;
        }
    }
}

// The order by address tells who is next, whoever came and went.
void DataChangedManager::invokeBehind(DataChangedHandler* handler,
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
