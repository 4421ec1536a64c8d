#include "platform/append_file.h"

#include "platform/posix/native_path.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace Tools::Platform {

namespace {

constexpr mode_t FileMode = 0666;

}

bool AppendFile::open(const std::string& path, Content content)
{
    close();
    // Without O_NONBLOCK a pipe that nobody reads would hold up the program.
    FileDescriptor file =
        NativePath(path).open(O_WRONLY | O_APPEND | O_CREAT | O_NOCTTY | O_NONBLOCK, FileMode);
    if (!file.valid() || isHeld(file.get(), true))
        return false;
    if (content == Content::Discard && ::ftruncate(file.get(), 0) != 0 && errno != EINVAL)
        return false;
    ::fcntl(file.get(), F_SETFL, O_APPEND);
    m_handle = file.release();
    return true;
}

void AppendFile::close()
{
    FileDescriptor(static_cast<int>(m_handle)).close();
    m_handle = -1;
}

void AppendFile::write(const char* text, std::size_t size)
{
    writeAll(static_cast<int>(m_handle), text, size);
}

}
