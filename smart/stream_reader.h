#pragma once

#include <istream>

namespace Tools::Smart {

// Characters of a stream, taken directly from its buffer's get area as long as that lasts. What
// happens at the area's end is left to the stream itself, so the result, the stream's flags and its
// exceptions are those of get() and putback() for every character, whatever kind of buffer it has.
//
// The stream takes no notice of what was read until commit(); every call that goes to the stream,
// and the destructor, does that first.
class StreamReader {
public:
    explicit StreamReader(std::istream& stream);
    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;
    ~StreamReader() { commit(); }

    // What is left of the get area. Empty when the stream has failed.
    const char* next() const { return m_next; }
    const char* end() const { return m_end; }
    // Takes everything before `next`.
    void setNext(const char* next) { m_next = next; }

    // As std::istream::get and putback, beyond the area.
    bool getFromStream(char& c);
    void putBack(char c);

    void commit();

private:
    void fetch();

    std::istream& m_stream;
    const char* m_begin = nullptr;
    const char* m_next = nullptr;
    const char* m_end = nullptr;
};

}
