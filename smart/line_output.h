#pragma once

#include <charconv>
#include <cstddef>
#include <cstring>
#include <memory>
#include <ostream>
#include <string_view>

namespace Tools::Smart {

// Lines for a stream, every piece written by the stream's own operators, every line flushed.
class StreamOutput {
public:
    explicit StreamOutput(std::ostream& stream) : m_stream(stream) {}

    template <class T>
    void write(T value)
    {
        m_stream << value;
    }
    void endLine() { m_stream << std::endl; }
    void finish() {}

private:
    std::ostream& m_stream;
};

// The same lines for a stream whose settings are such that its output is known beforehand. Whole
// lines are put together here and handed over at once. A string stream has nothing to flush, so it
// gets many lines at once.
class PlainOutput {
public:
    // True if the stream formats numbers as std::to_chars does, and pads nothing.
    static bool serves(const std::ostream& stream);

    explicit PlainOutput(std::ostream& stream);

    void write(std::string_view text);
    void write(int value);
    void write(double value);
    void endLine()
    {
        write("\n");
        if (!m_isString || m_size >= BatchSize)
            flush();
    }
    // To be called at the end.
    void finish();

private:
    // How much waits for a string stream.
    static constexpr std::size_t BatchSize = 65536;
    // The most decimals that `serves` accepts, and what any number then takes: the largest one in
    // fixed style.
    static constexpr int MaxPrecision = 40;
    static constexpr std::size_t MaxLength = 320 + MaxPrecision;

    // Hands over what is in the buffer, as the stream itself would: its state and its exceptions.
    void flush();
    void setBad();
    void grow(std::size_t size);
    char* reserve(std::size_t size)
    {
        if (m_capacity - m_size < size)
            grow(size);
        return m_buffer.get() + m_size;
    }

    std::ostream& m_stream;
    std::chars_format m_format;
    int m_precision;
    bool m_isString;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

// Most pieces are short, and a call of memcpy would cost more than the copy.
inline void PlainOutput::write(std::string_view text)
{
    const std::size_t size = text.size();
    const char* from = text.data();
    char* to = reserve(size);
    m_size += size;
    if (size > 32) {
        std::memcpy(to, from, size);
    } else if (size >= 16) {
        std::memcpy(to, from, 16);
        std::memcpy(to + size - 16, from + size - 16, 16);
    } else if (size >= 8) {
        std::memcpy(to, from, 8);
        std::memcpy(to + size - 8, from + size - 8, 8);
    } else if (size >= 4) {
        std::memcpy(to, from, 4);
        std::memcpy(to + size - 4, from + size - 4, 4);
    } else {
        for (std::size_t i = 0; i < size; ++i)
            to[i] = from[i];
    }
}

}
