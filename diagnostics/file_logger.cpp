#include <mdtools/logger.h>

#include <mdtools/file.h>

#include "platform/open_file.h"

#include <array>
#include <cstring>

namespace Tools {

struct FileLogger::State {
    std::string path;
    Platform::OutputFile file;
    // Once the file has been opened; release() does not change that.
    bool isReady = false;
};

FileLogger::FileLogger(const std::string& path) : m_state(std::make_unique<State>())
{
    m_state->path = path;
}

FileLogger::~FileLogger() = default;

void FileLogger::initialize()
{
    if (File::exists(m_state->path))
        cleanUp();
    open();
}

void FileLogger::initialize(const std::string& path)
{
    if (!m_state->path.empty())
        return;
    m_state->path = path;
    open();
}

void FileLogger::release()
{
    m_state->file.close();
}

// The line and its end in one write, so that lines of several programs do not mix.
void FileLogger::writeLine(const std::string& line)
{
    if (!m_state->isReady || !m_state->file.isOpen())
        return;
    // Most lines are short enough to be put together without an allocation.
    std::array<char, 1024> shortText;
    if (line.size() < shortText.size()) {
        std::memcpy(shortText.data(), line.data(), line.size());
        shortText[line.size()] = '\n';
        m_state->file.writeText(shortText.data(), line.size() + 1);
    } else {
        const std::string text = line + '\n';
        m_state->file.writeText(text.data(), text.size());
    }
}

void FileLogger::open()
{
    if (m_state->file.open(m_state->path, Platform::OutputFile::Sharing::All))
        m_state->isReady = true;
}

void FileLogger::cleanUp()
{
    release();
    File::removeEx(m_state->path);
}

}
