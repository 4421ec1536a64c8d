#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// platform/open_file.h - files that are held open, and read or extended in pieces.
namespace Tools::Platform {

// Owns what the system calls an open file. Child processes do not inherit it.
class OpenFile {
public:
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool isOpen() const { return m_handle != None; }
    void close();

protected:
    OpenFile() = default;
    ~OpenFile() { close(); }

    static constexpr std::intptr_t None = -1;
    std::intptr_t m_handle = None;
};

// A file open for reading, as bytes. It is not open if there is no such file, if it is no plain
// file, or if another process holds it for itself.
class InputFile : public OpenFile {
public:
    explicit InputFile(const std::string& path);

    std::uint64_t size() const;
    // Fills the buffer from `offset` on as far as the file goes; `count` is less than `capacity`
    // only at its end. False if the system failed. Several threads may read.
    bool read(std::uint64_t offset, void* buffer, std::size_t capacity, std::size_t& count) const;

private:
    friend class OutputFile;
};

// A file open for appending, made if it is missing.
class OutputFile : public OpenFile {
public:
    enum class Sharing {
        // Others may read and write it meanwhile, line by line as this one does.
        All,
        // Others may read it. Plain files only.
        Readers
    };
    enum class Content { Keep, Discard };

    OutputFile() = default;

    // What was open before is closed. False if the system refuses, if the file is write-protected,
    // or if somebody has it in a way that does not go with `sharing`. What is open cannot be
    // removed or renamed by this library.
    bool open(const std::string& path, Sharing sharing, Content content = Content::Keep);

    // Puts the text after all that has been written by then, in one piece. Line feeds become the
    // system's line ends. False if some of it did not get there: the disk is full, or nobody reads
    // the pipe. What did get there stays.
    bool writeText(const char* text, std::size_t size);
    // The file's last byte, whoever wrote it, is no line end. For a file that cannot be read this
    // is known only of what was written here.
    bool endsInsideLine() const;

    bool isSame(const InputFile& other) const;
    // Appends all bytes of `source` to a file that only readers share. If that fails, for want of
    // memory as well, the file is cut back to what it held before.
    bool append(const InputFile& source) const;

private:
    bool m_isPlain = false;
    bool m_canRead = false;
    bool m_wasTorn = false;
};

}
