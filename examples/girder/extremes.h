#pragma once

#include <cstddef>

namespace Girder {

// A value and where it occurs: the span, counted from 0, and the distance from its left end.
struct Extreme {
    double value = 0.0;
    std::size_t span = 0;
    double position = 0.0;
};

// The least and the greatest value of one quantity. Of equal values, those that differ by rounding
// only included, the first one seen is kept, so that a symmetric girder names its left half.
class Range {
public:
    bool isEmpty() const { return m_isEmpty; }
    const Extreme& minimum() const { return m_minimum; }
    const Extreme& maximum() const { return m_maximum; }

    void add(const Extreme& extreme);
    void add(const Range& range);

private:
    bool m_isEmpty = true;
    Extreme m_minimum;
    Extreme m_maximum;
};

struct Extremes {
    Range moment;
    Range shear;
    Range deflection;
};

}
