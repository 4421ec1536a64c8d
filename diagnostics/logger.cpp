#include <mdtools/logger.h>

namespace Tools {

Logger::Logger() = default;
Logger::Logger(const Logger&) = default;
Logger& Logger::operator=(const Logger&) = default;
Logger::~Logger() = default;

}
