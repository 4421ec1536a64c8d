#include <mdtools/error.h>

#include <cstring>

namespace Tools {

Error::Error(const char* text)
{
    initText(text == nullptr ? "" : text);
}

Error::Error(const std::string& text)
{
    initText(text.c_str());
}

Error::Error(const Error& other)
{
    initText(other.getText());
}

Error& Error::operator=(const Error& other)
{
    initText(other.getText());
    return *this;
}

Error::~Error() = default;

const char* Error::getText() const
{
    return m_text.get();
}

// Copied before the old text goes: `text` may be that one, or a part of it.
void Error::initText(const char* text)
{
    const std::size_t length = std::strlen(text);
    auto copy = std::make_unique<char[]>(length + 1);
    std::memcpy(copy.get(), text, length);
    m_text = std::move(copy);
}

FileReadError::FileReadError(const char* text) : Error(text) {}
FileReadError::FileReadError(const std::string& text) : Error(text) {}
FileReadError::FileReadError(const FileReadError& other) = default;
FileReadError& FileReadError::operator=(const FileReadError& other) = default;
FileReadError::~FileReadError() = default;

FileWriteError::FileWriteError(const char* text) : Error(text) {}
FileWriteError::FileWriteError(const std::string& text) : Error(text) {}
FileWriteError::FileWriteError(const FileWriteError& other) = default;
FileWriteError& FileWriteError::operator=(const FileWriteError& other) = default;
FileWriteError::~FileWriteError() = default;

}
