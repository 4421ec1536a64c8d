#pragma once

#include <mdtools/export.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace Tools {

// Writes labelled text files: lines of items "label = value", which write() collects and
// writeLine() ends. Each finished line is on its way to the disk before the call returns, so many
// items belong in one line. Lines end as the platform's text files do; numbers never depend on the
// locale.
//
// Nothing that fails is reported: a file that could not be opened takes lines and loses them, and
// after a line that could not be written, on a full disk for instance, nothing is written any more.
// A pipe that nobody reads is a failure like any other. Other programs may read the file and append
// to it meanwhile, but nobody can remove or rename it by File. An object made without a path does
// nothing at all. Null texts are empty. An object belongs to one thread at a time.
class MDTOOLS_API FileOutput {
public:
    // Opens the file for writing; what it held is gone.
    explicit FileOutput(const std::string& path);
    explicit FileOutput(const char* path);
    FileOutput();
    FileOutput(FileOutput&& other) noexcept;
    FileOutput& operator=(FileOutput&& other) noexcept;
    // Items that no writeLine() has ended are lost.
    ~FileOutput();

    // Digits after the point of reals, 16 at first; more than 10,000 are never written. Returns the
    // previous number.
    unsigned int setPrecision(unsigned int digits);

    // label = "text"; a quote in the text is written as it is.
    void write(const std::string& label, const std::string& text);
    void write(const char* label, const char* text);

    // label = 1,2,3: a list of `count` values, which may be 0. Reals are in scientific notation.
    void write(const std::string& label, int value);
    void write(const char* label, int value);
    void write(const std::string& label, const int* values, std::size_t count);
    void write(const char* label, const int* values, std::size_t count);
    void write(const std::string& label, std::size_t value);
    void write(const char* label, std::size_t value);
    void write(const std::string& label, const std::size_t* values, std::size_t count);
    void write(const char* label, const std::size_t* values, std::size_t count);
    void write(const std::string& label, double value);
    void write(const char* label, double value);
    void write(const std::string& label, const double* values, std::size_t count);
    void write(const char* label, const double* values, std::size_t count);

    // Writes the items that wait as one line; without any, nothing.
    void writeLine();
    // Writes the text as a line of its own. Items that wait are dropped, not written: end their
    // line before. An empty text changes nothing.
    void writeLine(const std::string& text);
    void writeLine(const char* text);

private:
    struct State;

    void startItem(std::string_view label);
    template <class Number>
    void writeList(std::string_view label, const Number* values, std::size_t count);

    std::unique_ptr<State> m_state;
};

}
