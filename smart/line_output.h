#pragma once

#include <charconv>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

namespace Tools::Smart {

// Lines of text and numbers for a stream, every line flushed, every number formatted as the stream
// would do it.
//
// As long as the stream's settings are such that its output is known beforehand, whole lines are
// put together here and handed over at once; with any other settings every piece goes through the
// stream's own operators. A string stream has nothing to flush, so it gets many lines at once.
class LineOutput {
public:
    explicit LineOutput(std::ostream& stream);
    LineOutput(const LineOutput&) = delete;
    LineOutput& operator=(const LineOutput&) = delete;

    void write(std::string_view text);
    void write(int value);
    void write(double value);
    void endLine();

    // To be called at the end.
    void finish();

private:
    bool readSettings();

    std::ostream& m_stream;
    std::chars_format m_format = std::chars_format::general;
    int m_precision = 6;
    bool m_isPlain;
    bool m_isString;
    std::string m_text;
};

}
