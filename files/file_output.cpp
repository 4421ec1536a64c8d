#include <mdtools/file_output.h>

#include "platform/open_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace Tools {

struct FileOutput::State {
    Platform::OutputFile file;
    // As in the failed state of a stream nothing is written any more.
    bool failed = false;
    std::string line;
    unsigned int precision = 16;

    void append(int value) { appendInteger(value); }
    void append(std::size_t value) { appendInteger(value); }
    void append(double value);
    void end();

private:
    template <class Integer>
    void appendInteger(Integer value);
};

template <class Integer>
void FileOutput::State::appendInteger(Integer value)
{
    std::array<char, 24> text{};
    line.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr);
}

// No double has more digits than the first number; what is asked for beyond them are zeros, up to
// the second one.
void FileOutput::State::append(double value)
{
    constexpr unsigned int MostDigits = 1100;
    constexpr unsigned int MostWritten = 10'000;
    std::array<char, MostDigits + 16> text{};
    const unsigned int wanted = std::min(precision, MostWritten);
    const unsigned int digits = std::min(wanted, MostDigits);
    char* const end = std::to_chars(text.data(), text.data() + text.size(), value,
                                    std::chars_format::scientific, static_cast<int>(digits))
                          .ptr;
    char* const exponent = std::find(text.data(), end, 'e');
    line.append(text.data(), exponent);
    if (exponent != end)
        line.append(wanted - digits, '0');
    line.append(exponent, end);
}

// One write a line, so that lines of several programs do not mix.
void FileOutput::State::end()
{
    line += '\n';
    if (file.isOpen() && !failed)
        failed = !file.writeText(line.data(), line.size());
    line.clear();
}

namespace {

std::string_view orEmpty(const char* text)
{
    return text != nullptr ? text : "";
}

}

FileOutput::FileOutput(const std::string& path) : m_state(std::make_unique<State>())
{
    using File = Platform::OutputFile;
    m_state->file.open(path, File::Sharing::All, File::Content::Discard);
}

FileOutput::FileOutput(const char* path) : FileOutput(std::string(orEmpty(path))) {}

FileOutput::FileOutput() = default;
FileOutput::FileOutput(FileOutput&&) noexcept = default;
FileOutput& FileOutput::operator=(FileOutput&&) noexcept = default;
FileOutput::~FileOutput() = default;

unsigned int FileOutput::setPrecision(unsigned int digits)
{
    return m_state != nullptr ? std::exchange(m_state->precision, digits) : 0;
}

void FileOutput::startItem(std::string_view label)
{
    m_state->line.append(label).append(" = ");
}

void FileOutput::write(const std::string& label, const std::string& text)
{
    if (m_state == nullptr)
        return;
    startItem(label);
    m_state->line.append("\"").append(text).append("\" ");
}

void FileOutput::write(const char* label, const char* text)
{
    write(std::string(orEmpty(label)), std::string(orEmpty(text)));
}

// A single value is a list of one.
template <class Number>
void FileOutput::writeList(std::string_view label, const Number* values, std::size_t count)
{
    if (m_state == nullptr)
        return;
    startItem(label);
    if (values == nullptr)
        return;
    for (std::size_t i = 0; i < count; ++i) {
        m_state->append(values[i]);
        m_state->line += i + 1 < count ? ',' : ' ';
    }
}

void FileOutput::write(const std::string& label, int value)
{
    writeList(label, &value, 1);
}

void FileOutput::write(const char* label, int value)
{
    writeList(orEmpty(label), &value, 1);
}

void FileOutput::write(const std::string& label, const int* values, std::size_t count)
{
    writeList(label, values, count);
}

void FileOutput::write(const char* label, const int* values, std::size_t count)
{
    writeList(orEmpty(label), values, count);
}

void FileOutput::write(const std::string& label, std::size_t value)
{
    writeList(label, &value, 1);
}

void FileOutput::write(const char* label, std::size_t value)
{
    writeList(orEmpty(label), &value, 1);
}

void FileOutput::write(const std::string& label, const std::size_t* values, std::size_t count)
{
    writeList(label, values, count);
}

void FileOutput::write(const char* label, const std::size_t* values, std::size_t count)
{
    writeList(orEmpty(label), values, count);
}

void FileOutput::write(const std::string& label, double value)
{
    writeList(label, &value, 1);
}

void FileOutput::write(const char* label, double value)
{
    writeList(orEmpty(label), &value, 1);
}

void FileOutput::write(const std::string& label, const double* values, std::size_t count)
{
    writeList(label, values, count);
}

void FileOutput::write(const char* label, const double* values, std::size_t count)
{
    writeList(orEmpty(label), values, count);
}

void FileOutput::writeLine()
{
    if (m_state != nullptr && !m_state->line.empty())
        m_state->end();
}

void FileOutput::writeLine(const std::string& text)
{
    if (m_state == nullptr || text.empty())
        return;
    m_state->line = text;
    m_state->end();
}

void FileOutput::writeLine(const char* text)
{
    if (text != nullptr)
        writeLine(std::string(text));
}

}
