#include "span_line.h"

#include "quadrature.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Girder {

namespace {

// A level tangent this close to a support, as a share of the span, is the support's own: the
// deflection there is nothing but rounding.
constexpr double AtSupport = 1e-7;

// Where the moment of a stretch, given by the values at its start, is zero; distances from there.
// A root that is no number or lies outside belongs to no stretch and is left to the caller.
std::array<double, 2> momentZeros(double moment, double shear, double load)
{
    if (load == 0.0)
        return {-moment / shear, -moment / shear};
    const double half = 0.5 * shear;
    const double root = std::sqrt(half * half + 0.5 * load * moment);
    const double sum = half + std::copysign(root, half);
    return {2.0 * sum / load, -moment / sum};
}

}

SpanLine::SpanLine(const StiffnessLine& stiffness, const Loads& loads)
    : m_length(stiffness.length()), m_uniform(loads.uniform)
{
    makePieces(stiffness, loads);
    startForces(loads);
}

void SpanLine::makePieces(const StiffnessLine& stiffness, const Loads& loads)
{
    std::vector<double> breaks;
    for (const StiffnessPoint& point : stiffness.points())
        breaks.push_back(point.position);
    for (const PointLoad& load : loads.points)
        breaks.push_back(load.position);
    std::sort(breaks.begin(), breaks.end());
    breaks.erase(std::unique(breaks.begin(), breaks.end()), breaks.end());
    for (std::size_t i = 1; i < breaks.size(); ++i) {
        Piece piece;
        piece.start = breaks[i - 1];
        piece.end = breaks[i];
        piece.stiffness = stiffness.at(piece.start);
        piece.endStiffness = stiffness.at(piece.end);
        m_pieces.push_back(piece);
    }
}

void SpanLine::startForces(const Loads& loads)
{
    const double middle = 0.5 * m_uniform * m_length;
    m_leftReaction = middle;
    m_rightReaction = middle;
    for (const PointLoad& load : loads.points) {
        const double share = load.position / m_length;
        m_leftReaction += load.force * (1.0 - share);
        m_rightReaction += load.force * share;
    }
    std::vector<PointLoad> points = loads.points;
    std::stable_sort(points.begin(), points.end(), [](const PointLoad& a, const PointLoad& b) {
        return a.position < b.position;
    });
    auto next = points.begin();
    double shear = m_leftReaction;
    double moment = 0.0;
    for (Piece& piece : m_pieces) {
        for (; next != points.end() && next->position <= piece.start; ++next)
            shear -= next->force;
        piece.shear = shear;
        piece.moment = moment;
        moment = momentIn(piece, piece.end);
        shear = shearIn(piece, piece.end);
    }
}

Flexibility SpanLine::flexibility() const
{
    Flexibility result;
    for (const Piece& piece : m_pieces) {
        const auto along = [&](auto weight) {
            return integral(piece.start, piece.end, [&](double x) {
                const double share = (x - piece.start) / (piece.end - piece.start);
                return weight(x / m_length) / std::lerp(piece.stiffness, piece.endStiffness, share);
            });
        };
        result.left += along([](double t) { return (1.0 - t) * (1.0 - t); });
        result.across += along([](double t) { return t * (1.0 - t); });
        result.right += along([](double t) { return t * t; });
    }
    return result;
}

EndRotations SpanLine::endRotations() const
{
    EndRotations result;
    for (const Piece& piece : m_pieces) {
        result.left += integral(piece.start, piece.end, [&](double x) {
            return curvatureIn(piece, x) * (1.0 - x / m_length);
        });
        result.right += integral(piece.start, piece.end,
                                 [&](double x) { return curvatureIn(piece, x) * (x / m_length); });
    }
    return result;
}

void SpanLine::setEndMoments(double left, double right)
{
    const double shear = (right - left) / m_length;
    m_leftReaction += shear;
    m_rightReaction -= shear;
    for (Piece& piece : m_pieces) {
        piece.shear += shear;
        piece.moment += std::lerp(left, right, piece.start / m_length);
    }
    integrate();
}

void SpanLine::integrate()
{
    double slope = endRotations().left;
    double deflection = 0.0;
    for (Piece& piece : m_pieces) {
        piece.slope = slope;
        piece.deflection = deflection;
        slope = slopeIn(piece, piece.end);
        deflection = deflectionIn(piece, piece.end);
    }
}

double SpanLine::stationAt(int i, int count) const
{
    return i == count ? m_length : m_length * i / count;
}

const SpanLine::Piece& SpanLine::pieceAt(double x) const
{
    const auto after = std::upper_bound(
        m_pieces.begin(), m_pieces.end(), x,
        [](double position, const Piece& piece) { return position < piece.start; });
    return after == m_pieces.begin() ? m_pieces.front() : *(after - 1);
}

double SpanLine::moment(double x) const
{
    return momentIn(pieceAt(x), x);
}

double SpanLine::shear(double x) const
{
    return shearIn(pieceAt(x), x);
}

double SpanLine::shearBefore(double x) const
{
    const auto next = std::lower_bound(
        m_pieces.begin(), m_pieces.end(), x,
        [](const Piece& piece, double position) { return piece.start < position; });
    return shearIn(next == m_pieces.begin() ? m_pieces.front() : *(next - 1), x);
}

double SpanLine::slope(double x) const
{
    return slopeIn(pieceAt(x), x);
}

double SpanLine::deflection(double x) const
{
    // Supports do not give way; the integration leaves a rounding error at the right one.
    return x >= m_length ? 0.0 : deflectionIn(pieceAt(x), x);
}

double SpanLine::momentIn(const Piece& piece, double x) const
{
    const double t = x - piece.start;
    return piece.moment + t * (piece.shear - 0.5 * m_uniform * t);
}

double SpanLine::shearIn(const Piece& piece, double x) const
{
    return piece.shear - m_uniform * (x - piece.start);
}

double SpanLine::curvatureIn(const Piece& piece, double x) const
{
    const double share = (x - piece.start) / (piece.end - piece.start);
    return momentIn(piece, x) / std::lerp(piece.stiffness, piece.endStiffness, share);
}

double SpanLine::slopeIn(const Piece& piece, double x) const
{
    return piece.slope - integral(piece.start, x, [&](double s) { return curvatureIn(piece, s); });
}

double SpanLine::deflectionIn(const Piece& piece, double x) const
{
    return piece.deflection + piece.slope * (x - piece.start) -
           integral(piece.start, x, [&](double s) { return (x - s) * curvatureIn(piece, s); });
}

Extremes SpanLine::extremes(std::size_t span) const
{
    Extremes result;
    for (const Piece& piece : m_pieces) {
        addForces(piece, span, result);
        addDeflections(piece, span, result);
    }
    result.deflection.add({0.0, span, m_length});
    return result;
}

void SpanLine::addForces(const Piece& piece, std::size_t span, Extremes& result) const
{
    for (const double x : {piece.start, piece.end}) {
        result.moment.add({momentIn(piece, x), span, x});
        result.shear.add({shearIn(piece, x), span, x});
    }
    const double zeroShear = piece.start + piece.shear / m_uniform;
    if (zeroShear > piece.start && zeroShear < piece.end)
        result.moment.add({momentIn(piece, zeroShear), span, zeroShear});
}

// Between the zeros of the moment the slope only grows or only falls, so each such part holds one
// level point at most.
void SpanLine::addDeflections(const Piece& piece, std::size_t span, Extremes& result) const
{
    result.deflection.add({deflectionIn(piece, piece.start), span, piece.start});
    std::vector<double> bounds = {piece.start, piece.end};
    for (const double zero : momentZeros(piece.moment, piece.shear, m_uniform)) {
        if (zero > 0.0 && piece.start + zero < piece.end)
            bounds.push_back(piece.start + zero);
    }
    std::sort(bounds.begin(), bounds.end());
    for (std::size_t i = 1; i < bounds.size(); ++i) {
        if (slopeIn(piece, bounds[i - 1]) * slopeIn(piece, bounds[i]) > 0.0)
            continue;
        const double x = flatPoint(piece, bounds[i - 1], bounds[i]);
        if (x > AtSupport * m_length && x < (1.0 - AtSupport) * m_length)
            result.deflection.add({deflectionIn(piece, x), span, x});
    }
}

double SpanLine::flatPoint(const Piece& piece, double from, double to) const
{
    constexpr int MantissaBits = 53;
    const bool falls = slopeIn(piece, from) > 0.0;
    for (int i = 0; i < MantissaBits; ++i) {
        const double middle = 0.5 * (from + to);
        (slopeIn(piece, middle) > 0.0) == falls ? from = middle : to = middle;
    }
    return 0.5 * (from + to);
}

}
