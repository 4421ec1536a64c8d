#pragma once

#include <mdtools/progress.h>

#include <ostream>

namespace Girder {

// A bar on a terminal, drawn on one line over and over; the line is empty again in the end.
class ProgressBar : public Tools::ProgressHandler {
public:
    explicit ProgressBar(std::ostream& out) : m_out(out) {}
    ~ProgressBar() override;
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void setPosition(std::uint64_t position) override;
    void setIncrement(std::uint64_t step) override;
    void setInfo(const char* text) override;
    void setTitle(const char* text) override;
    void activate() override;
    void reset() override;
    void setMinimum(std::uint64_t value) override;
    void setMaximum(std::uint64_t value) override;

private:
    void draw();
    void clear();

    std::ostream& m_out;
    std::uint64_t m_minimum = 0;
    std::uint64_t m_maximum = 0;
    std::uint64_t m_position = 0;
    std::size_t m_width = 0; // of what is on the line
};

}
