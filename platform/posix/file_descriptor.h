#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace Tools::Platform {

// Owns a descriptor and closes it. -1 is "none".
class FileDescriptor {
public:
    explicit FileDescriptor(int value = -1) : m_value(value) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_value(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(m_value, other.m_value);
        return *this;
    }
    ~FileDescriptor() { close(); }

    bool valid() const { return m_value != -1; }
    int get() const { return m_value; }
    int release() { return std::exchange(m_value, -1); }

    // 0 or the cause: some file systems report a full disk only now. errno stays as it was.
    int close()
    {
        if (!valid())
            return 0;
        const int before = errno;
        const int cause = ::close(release()) == 0 ? 0 : errno;
        errno = before;
        return cause;
    }

private:
    int m_value;
};

}
