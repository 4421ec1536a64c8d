#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// append_file.h - text files that several programs extend line by line.
namespace Tools::Platform {

// A text file open for appending. Others may read and write it meanwhile, and child processes do
// not inherit it.
class AppendFile {
public:
    AppendFile() = default;
    ~AppendFile() { close(); }
    AppendFile(const AppendFile&) = delete;
    AppendFile& operator=(const AppendFile&) = delete;

    enum class Content { Keep, Discard };

    // Makes the file if it is missing; keeps what it holds, or not. What was open before is closed.
    // False if the system refuses, or if somebody has the file for himself.
    bool open(const std::string& path, Content content = Content::Keep);
    bool isOpen() const { return m_handle != -1; }
    void close();

    // Puts the text behind all that has been written by then, in one piece. Line feeds become the
    // system's line ends. What the disk has no room for is lost.
    void write(const char* text, std::size_t size);

private:
    std::intptr_t m_handle = -1;
};

}
