#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Whole files read and extended in blocks, in bytes as they are.
namespace Tools::Platform {

// A file opened for reading. It is not valid if there is no such file, if it is no plain file, or
// if another process holds it for itself.
class InputFile {
public:
    explicit InputFile(const std::string& path);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    bool valid() const { return m_handle != -1; }
    std::uint64_t size() const;
    // Fills the buffer from `offset` on as far as the file goes; `count` is less than `capacity`
    // only at its end. False if the system failed. Several threads may read.
    bool read(std::uint64_t offset, void* buffer, std::size_t capacity, std::size_t& count) const;

private:
    friend class AppendedFile;
    std::intptr_t m_handle;
};

// A file opened for appending, made if it is missing. Others may read it, but while one appends
// nobody else gets it for writing.
class AppendedFile {
public:
    explicit AppendedFile(const std::string& path);
    AppendedFile(const AppendedFile&) = delete;
    AppendedFile& operator=(const AppendedFile&) = delete;
    ~AppendedFile();

    bool valid() const { return m_handle != -1; }
    bool isSame(const InputFile& other) const;
    // Appends all of `source`. If that fails, the file is cut back to what it held before.
    bool append(const InputFile& source);

private:
    std::intptr_t m_handle;
    std::uint64_t m_start = 0;
};

}
