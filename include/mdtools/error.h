#pragma once

#include <mdtools/export.h>

#include <memory>
#include <string>

namespace Tools {

// Base of the library's exceptions about bad content. It carries one message; whoever throws it
// writes the message, in the process's code page. Catch Error to handle reading and writing alike.
// An object is a plain value: any number of threads may read one that nobody changes.
class MDTOOLS_API Error {
public:
    // A null pointer is taken as the empty text. A text ends at its first NUL.
    Error(const char* text);
    Error(const std::string& text);

    // Every copy owns its own text.
    Error(const Error& other);
    Error& operator=(const Error& other);
    virtual ~Error();

    const char* getText() const;

protected:
    // Replaces the stored text by a copy of `text`, which may be the stored one.
    void initText(const char* text);

private:
    std::unique_ptr<char[]> m_text;
};

// A file could not be read, or what it holds is not what its reader expects.
class MDTOOLS_API FileReadError : public Error {
public:
    FileReadError(const char* text);
    FileReadError(const std::string& text);
    FileReadError(const FileReadError& other);
    FileReadError& operator=(const FileReadError& other);
    ~FileReadError() override;
};

// A file could not be written.
class MDTOOLS_API FileWriteError : public Error {
public:
    FileWriteError(const char* text);
    FileWriteError(const std::string& text);
    FileWriteError(const FileWriteError& other);
    FileWriteError& operator=(const FileWriteError& other);
    ~FileWriteError() override;
};

}
