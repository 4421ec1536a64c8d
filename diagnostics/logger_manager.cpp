#include <mdtools/logger.h>

#include "platform/lifetime.h"
#include "trace/formatted_text.h"

#include <algorithm>
#include <new>
#include <utility>

namespace Tools {

LoggerManager::~LoggerManager()
{
    release();
}

LoggerManager& LoggerManager::get()
{
    // At the end the sinks are released, but the object itself stays: whoever logs still later
    // finds an empty list.
    alignas(LoggerManager) static unsigned char storage[sizeof(LoggerManager)];
    static LoggerManager* const manager = [] {
        Platform::onLibraryEnd([](Platform::LibraryEnd) { get().release(); });
        return new (storage) LoggerManager;
    }();
    return *manager;
}

void LoggerManager::add(std::shared_ptr<Logger> logger)
{
    if (logger && std::find(m_loggers.begin(), m_loggers.end(), logger) == m_loggers.end())
        m_loggers.push_back(std::move(logger));
}

// By value: the caller's share may be one that this call ends.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void LoggerManager::remove(std::shared_ptr<Logger> logger)
{
    const auto position = std::find(m_loggers.begin(), m_loggers.end(), logger);
    if (position != m_loggers.end())
        m_loggers.erase(position);
}

void LoggerManager::release()
{
    // By index, here and below: a sink may add or remove one, itself as well, while it is called.
    for (std::size_t i = 0; i < m_loggers.size(); ++i) {
        const std::shared_ptr<Logger> logger = m_loggers[i];
        logger->release();
    }
    // Their destructors may come back, too.
    std::vector<std::shared_ptr<Logger>> dropped;
    dropped.swap(m_loggers);
}

void LoggerManager::writeLine(const std::string& line) const
{
    for (std::size_t i = 0; i < m_loggers.size(); ++i) {
        const std::shared_ptr<Logger> logger = m_loggers[i];
        logger->writeLine(line);
    }
}

void LoggerManager::writeFormatedLine(const char* format, ...) const
{
    va_list args;
    va_start(args, format);
    const FormattedText text(format, args);
    va_end(args);
    if (text.get())
        writeLine(text.get());
}

}
