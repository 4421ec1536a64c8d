#include "log.h"

#include "job_files.h"

#include <mdtools/debug_output.h>
#include <mdtools/logger.h>

namespace Girder {

Log::Log(const std::string& directory) : m_file(std::make_shared<Tools::FileLogger>(""))
{
    if (!directory.empty())
        m_file->initialize(joinPath(directory, "girder.log"));
    Tools::LoggerManager::get().add(m_file);
}

Log::~Log()
{
    m_file->release();
    Tools::LoggerManager::get().remove(m_file);
}

void Log::write(const std::string& text)
{
    // The date has a blank in front.
    const std::string date = Tools::DebugReceiverHelper::getDateAndTime().substr(1);
    Tools::LoggerManager::get().writeFormatedLine("%s %s", date.c_str(), text.c_str());
}

}
