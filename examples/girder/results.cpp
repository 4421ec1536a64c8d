#include "results.h"

#include <algorithm>
#include <cmath>

namespace Girder {

namespace {

std::vector<Station> stationsOf(const SpanLine& line, int count)
{
    std::vector<Station> result;
    for (int i = 0; i <= count; ++i) {
        const double x = line.stationAt(i, count);
        result.push_back({x, line.moment(x), line.shear(x), line.deflection(x)});
    }
    return result;
}

// Steel at its design strength, with the usual inner lever arm.
double capacityOf(const Span& span)
{
    constexpr double Strength = 43.5; // kN/cm2
    constexpr double LeverArm = 0.9;  // of the depth
    return Strength * span.reinforcement * LeverArm * span.depth;
}

bool isFiniteRange(const Range& range)
{
    return std::isfinite(range.minimum().value) && std::isfinite(range.maximum().value);
}

}

bool Results::isFinite() const
{
    return isFiniteRange(extremes.moment) && isFiniteRange(extremes.shear) &&
           isFiniteRange(extremes.deflection) &&
           std::all_of(supports.begin(), supports.end(), [](const SupportResult& support) {
               return std::isfinite(support.x) && std::isfinite(support.reaction) &&
                      std::isfinite(support.moment);
           });
}

Results computeResults(const Model& model, int stations)
{
    const Solution solution = solve(model);
    Results results;
    results.title = model.title;
    results.extremes = solution.extremes();
    double x = 0.0;
    for (std::size_t i = 0; i < model.supports.size(); ++i) {
        results.supports.push_back(
            {x, model.supports[i], solution.reactions[i], solution.supportMoments[i]});
        if (i == model.spans.size())
            break;
        const SpanLine& line = solution.spans[i];
        results.spans.push_back({x, line.length(), capacityOf(model.spans[i]),
                                 line.extremes(i).moment.maximum().value,
                                 stationsOf(line, stations)});
        x += line.length();
    }
    return results;
}

}
