#include "envelope.h"

#include <algorithm>

namespace Girder {

void Bounds::add(double value, double firstAxle)
{
    add({value, firstAxle, value, firstAxle});
}

void Bounds::add(const Bounds& later)
{
    if (later.minimum < minimum) {
        minimum = later.minimum;
        minimumAt = later.minimumAt;
    }
    if (later.maximum > maximum) {
        maximum = later.maximum;
        maximumAt = later.maximumAt;
    }
}

void StationBounds::add(const StationBounds& later)
{
    moment.add(later.moment);
    shear.add(later.shear);
    deflection.add(later.deflection);
}

void Envelope::add(const Envelope& later)
{
    for (std::size_t i = 0; i < reactions.size(); ++i)
        reactions[i].add(later.reactions[i]);
    for (std::size_t i = 0; i < spans.size(); ++i) {
        for (std::size_t j = 0; j < spans[i].size(); ++j)
            spans[i][j].add(later.spans[i][j]);
    }
}

EnvelopeSolver::EnvelopeSolver(const Model& model, int stations, int positions)
    : m_model(model), m_solver(model), m_stations(stations), m_positions(positions)
{
    for (const Span& span : model.spans) {
        m_starts.push_back(m_length);
        m_length += span.length;
    }
}

double EnvelopeSolver::firstAxleAt(int position) const
{
    double trainLength = 0.0;
    for (const Axle& axle : m_model.train)
        trainLength = std::max(trainLength, axle.distance);
    return (m_length + trainLength) * position / (m_positions - 1);
}

std::vector<Loads> EnvelopeSolver::loadsAt(double firstAxle) const
{
    std::vector<Loads> loads(m_model.spans.size());
    for (const Axle& axle : m_model.train) {
        const double x = firstAxle - axle.distance;
        if (x < 0.0 || x > m_length)
            continue;
        const auto next = std::upper_bound(m_starts.begin(), m_starts.end(), x);
        const auto span = static_cast<std::size_t>(next - m_starts.begin()) - 1;
        // The start of a span is a rounded sum, so an axle near its end may come out beyond it.
        const double within = std::min(x - m_starts[span], m_model.spans[span].length);
        loads[span].points.push_back({within, axle.force});
    }
    return loads;
}

Envelope EnvelopeSolver::makeEmpty() const
{
    Envelope envelope;
    envelope.reactions.resize(m_model.supports.size());
    envelope.spans.assign(m_model.spans.size(),
                          std::vector<StationBounds>(static_cast<std::size_t>(m_stations) + 1));
    return envelope;
}

void EnvelopeSolver::add(int position, Envelope& envelope) const
{
    const double firstAxle = firstAxleAt(position);
    const Solution solution = m_solver.solve(loadsAt(firstAxle));
    for (std::size_t i = 0; i < envelope.reactions.size(); ++i)
        envelope.reactions[i].add(solution.reactions[i], firstAxle);
    for (std::size_t i = 0; i < solution.spans.size(); ++i) {
        const SpanLine& line = solution.spans[i];
        for (int j = 0; j <= m_stations; ++j) {
            const double x = line.stationAt(j, m_stations);
            StationBounds& bounds = envelope.spans[i][static_cast<std::size_t>(j)];
            bounds.moment.add(line.moment(x), firstAxle);
            bounds.shear.add(line.shearBefore(x), firstAxle);
            bounds.shear.add(line.shear(x), firstAxle);
            bounds.deflection.add(line.deflection(x), firstAxle);
        }
    }
}

}
