#include <mdtools/logger.h>

#include "platform/filesystem.h"
#include "platform/open_file.h"

#include <array>
#include <cstring>

namespace Tools {

struct FileLogger::State {
    std::string path;
    Platform::OutputFile file;
    // Once the file has been opened; release() does not change that.
    bool isReady = false;
    // The file may end inside of a line: of a program that was killed, or one that found no room.
    bool mayBeTorn = false;

    void write(const char* text, std::size_t size);
};

FileLogger::FileLogger(const std::string& path) : m_state(std::make_unique<State>())
{
    m_state->path = path;
}

FileLogger::~FileLogger() = default;

// A torn line gets its end in the same write, so that no other line comes between. Nothing is cut
// off instead: others may have written since.
void FileLogger::State::write(const char* text, std::size_t size)
{
    if (mayBeTorn && file.endsInsideLine()) {
        const std::string whole = '\n' + std::string(text, size);
        mayBeTorn = !file.writeText(whole.data(), whole.size());
    } else {
        mayBeTorn = !file.writeText(text, size);
    }
}

void FileLogger::initialize()
{
    cleanUp();
    // Whoever has the old file open shares the fresh one.
    open(true);
}

void FileLogger::initialize(const std::string& path)
{
    if (!m_state->path.empty())
        return;
    m_state->path = path;
    open(false);
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
        m_state->write(shortText.data(), line.size() + 1);
    } else {
        const std::string text = line + '\n';
        m_state->write(text.data(), text.size());
    }
}

void FileLogger::open(bool isFresh)
{
    using Output = Platform::OutputFile;
    const Output::Content content = isFresh ? Output::Content::Discard : Output::Content::Keep;
    if (!m_state->file.open(m_state->path, Output::Sharing::All, content))
        return;
    m_state->isReady = true;
    m_state->mayBeTorn = true;
}

// Links and devices stay what they are. A file that somebody has open would keep its name until he
// closes it, or take his lines along.
void FileLogger::cleanUp()
{
    release();
    const std::string& path = m_state->path;
    if (Platform::entryType(path) == Platform::EntryType::File &&
        Platform::InputFile(path).isOpen() && !Platform::isLocked(path))
        Platform::removeFile(path);
}

}
