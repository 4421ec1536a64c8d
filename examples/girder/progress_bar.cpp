#include "progress_bar.h"

#include <algorithm>
#include <string>

namespace Girder {

namespace {

constexpr std::size_t BarWidth = 40;
constexpr int Percent = 100;

}

ProgressBar::~ProgressBar()
{
    clear();
}

void ProgressBar::setPosition(std::uint64_t position)
{
    m_position = position;
    draw();
}

void ProgressBar::setIncrement(std::uint64_t step)
{
    m_position += step;
    draw();
}

void ProgressBar::setInfo(const char*) {}

void ProgressBar::setTitle(const char*) {}

void ProgressBar::activate()
{
    draw();
}

void ProgressBar::reset()
{
    m_position = m_minimum;
    clear();
}

void ProgressBar::setMinimum(std::uint64_t value)
{
    m_minimum = value;
}

void ProgressBar::setMaximum(std::uint64_t value)
{
    m_maximum = value;
}

void ProgressBar::draw()
{
    if (m_maximum <= m_minimum)
        return;
    const std::uint64_t position = std::clamp(m_position, m_minimum, m_maximum);
    const double share =
        static_cast<double>(position - m_minimum) / static_cast<double>(m_maximum - m_minimum);
    const auto filled = static_cast<std::size_t>(share * static_cast<double>(BarWidth));
    const std::string text = "[" + std::string(filled, '#') + std::string(BarWidth - filled, '.') +
                             "] " + std::to_string(static_cast<int>(share * Percent)) + " %";
    m_out << '\r' << text << std::flush;
    m_width = text.size();
}

void ProgressBar::clear()
{
    if (m_width > 0)
        m_out << '\r' << std::string(m_width, ' ') << '\r' << std::flush;
    m_width = 0;
}

}
