#include "extremes.h"

#include <algorithm>
#include <cmath>

namespace Girder {

namespace {

constexpr double RoundingError = 1e-12;

bool exceeds(double value, double other)
{
    const double magnitude = std::max(std::abs(value), std::abs(other));
    return value - other > RoundingError * magnitude;
}

}

void Range::add(const Extreme& extreme)
{
    if (m_isEmpty || exceeds(extreme.value, m_maximum.value))
        m_maximum = extreme;
    if (m_isEmpty || exceeds(m_minimum.value, extreme.value))
        m_minimum = extreme;
    m_isEmpty = false;
}

void Range::add(const Range& range)
{
    if (range.m_isEmpty)
        return;
    add(range.m_minimum);
    add(range.m_maximum);
}

}
