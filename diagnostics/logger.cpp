#include <mdtools/logger.h>

namespace Tools {

Logger::~Logger() = default;

}
