#include <mdtools/logger.h>

#include <algorithm>

namespace Tools {

void LoggerNotifier::attach(Logger* logger)
{
    if (logger && std::find(m_loggers.begin(), m_loggers.end(), logger) == m_loggers.end())
        m_loggers.push_back(logger);
}

void LoggerNotifier::detach(Logger* logger)
{
    const auto position = std::find(m_loggers.begin(), m_loggers.end(), logger);
    if (position != m_loggers.end())
        m_loggers.erase(position);
}

void LoggerNotifier::notifyWriteLine(const std::string& line) const
{
    // By index: a sink may detach itself while it is called.
    for (std::size_t i = 0; i < m_loggers.size(); ++i)
        m_loggers[i]->writeLine(line);
}

void LoggerNotifier::notifyWriteLine(const char* line) const
{
    if (!line)
        return;
    for (std::size_t i = 0; i < m_loggers.size(); ++i)
        m_loggers[i]->writeLine(line);
}

}
