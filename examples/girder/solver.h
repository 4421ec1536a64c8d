#pragma once

#include "span_line.h"

#include <vector>

namespace Girder {

struct Solution {
    std::vector<SpanLine> spans;
    std::vector<double> supportMoments; // at a fixed end the clamping moment
    std::vector<double> reactions;

    Extremes extremes() const;
};

// A continuous girder on unyielding supports by the force method: the moments over the supports are
// the unknowns, the continuity of the tangent there gives the equations. The left side of the
// equations is formed once, any number of loadings can be solved with it, by several threads too.
// Values that are not finite mean that the model's numbers are too large or too small.
class Solver {
public:
    // It has one span at least, one support more than spans,
    // lengths and stiffnesses above zero, and loads within their spans.
    explicit Solver(const Model& model);

    // Under one set of loads for each span.
    Solution solve(const std::vector<Loads>& loads) const;

private:
    // The equation of a support: of its own moment and those of the supports beside it.
    struct Row {
        double left = 0.0;
        double own = 1.0;
        double right = 0.0;
        bool isMoment = false; // false: a hinged end, whose moment is zero
    };

    void eliminate();
    std::vector<double> momentsFrom(const std::vector<double>& rotations) const;

    std::vector<StiffnessLine> m_stiffness; // of the spans
    std::vector<Row> m_rows;
};

// The girder under the model's own loads.
Solution solve(const Model& model);

}
