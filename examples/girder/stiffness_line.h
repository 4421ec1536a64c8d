#pragma once

#include "model.h"

#include <vector>

namespace Girder {

// The bending stiffness along a span as points from end to end with straight lines between them.
// Neighbouring values differ by no more than half, so that integrals over one piece can be taken
// with few points.
class StiffnessLine {
public:
    // Beyond its outermost points the span's table goes on level.
    explicit StiffnessLine(const Span& span);

    double length() const { return m_points.back().position; }
    const std::vector<StiffnessPoint>& points() const { return m_points; }
    double at(double x) const;

private:
    void addUpTo(const StiffnessPoint& point);

    std::vector<StiffnessPoint> m_points;
};

}
