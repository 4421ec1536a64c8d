#include "stiffness_line.h"

#include <mdtools/table.h>

#include <algorithm>
#include <cmath>

namespace Girder {

namespace {

// Of the values at the ends of a piece: so much the quadrature rule follows without an error that
// shows.
constexpr double GreatestRatio = 1.5;

}

StiffnessLine::StiffnessLine(const Span& span)
{
    Tools::Table table;
    std::vector<double> positions = {0.0, span.length};
    for (const StiffnessPoint& point : span.stiffness) {
        table.addPair(point.position, point.value);
        if (point.position > 0.0 && point.position < span.length)
            positions.push_back(point.position);
    }
    std::sort(positions.begin(), positions.end());
    for (const double position : positions)
        addUpTo({position, table.getValue(position)});
}

// In equal steps of the ratio: what matters is the change relative to the value itself.
void StiffnessLine::addUpTo(const StiffnessPoint& point)
{
    if (!m_points.empty()) {
        const StiffnessPoint last = m_points.back();
        const double ratio = std::log(point.value) - std::log(last.value);
        const int steps = static_cast<int>(std::ceil(std::abs(ratio) / std::log(GreatestRatio)));
        for (int i = 1; i < steps; ++i) {
            const double value = last.value * std::exp(ratio * i / steps);
            const double share = (value - last.value) / (point.value - last.value);
            const double position = std::lerp(last.position, point.position, share);
            if (position > m_points.back().position && position < point.position)
                m_points.push_back({position, value});
        }
    }
    m_points.push_back(point);
}

double StiffnessLine::at(double x) const
{
    const auto next = std::upper_bound(
        m_points.begin() + 1, m_points.end() - 1, x,
        [](double position, const StiffnessPoint& p) { return position < p.position; });
    const StiffnessPoint& start = *(next - 1);
    const double share = (x - start.position) / (next->position - start.position);
    return std::lerp(start.value, next->value, share);
}

}
