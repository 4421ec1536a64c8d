#pragma once

#include "extremes.h"
#include "model.h"
#include "stiffness_line.h"

#include <vector>

namespace Girder {

// The rotations that a span without end moments shows at its ends: by how much the tangent at an
// end points below the chord.
struct EndRotations {
    double left = 0.0;
    double right = 0.0;
};

// The rotations by unit end moments: at the left end by a moment there, at either end by a moment
// at the other, at the right end by a moment there.
struct Flexibility {
    double left = 0.0;
    double across = 0.0;
    double right = 0.0;
};

// Internal forces and deflections along one span: first those of a simple beam under the loads,
// then, with the end moments, those of the span within the girder.
class SpanLine {
public:
    SpanLine(const StiffnessLine& stiffness, const Loads& loads);

    Flexibility flexibility() const;
    EndRotations endRotations() const;
    void setEndMoments(double left, double right);

    double length() const { return m_length; }
    // The position of the i-th of `count` equal intervals' ends, 0 to count.
    double stationAt(int i, int count) const;
    double leftReaction() const { return m_leftReaction; }
    double rightReaction() const { return m_rightReaction; }

    // At a distance from the left end within the span. At a force the shear is that just
    // right of it; over the right support it is that just left of the support.
    double moment(double x) const;
    double shear(double x) const;
    // Just left of a force at x.
    double shearBefore(double x) const;
    double slope(double x) const;
    double deflection(double x) const;

    // The exact ones, between stations too. `span` is the number that they carry.
    Extremes extremes(std::size_t span) const;

private:
    // A stretch without forces inside. The bending stiffness runs straight from end to end, and the
    // values are those at its start.
    struct Piece {
        double start = 0.0;
        double end = 0.0;
        double stiffness = 0.0;
        double endStiffness = 0.0;
        double shear = 0.0;
        double moment = 0.0;
        double slope = 0.0;
        double deflection = 0.0;
    };

    void makePieces(const StiffnessLine& stiffness, const Loads& loads);
    void startForces(const Loads& loads);
    void integrate();

    const Piece& pieceAt(double x) const;
    double momentIn(const Piece& piece, double x) const;
    double shearIn(const Piece& piece, double x) const;
    double slopeIn(const Piece& piece, double x) const;
    double deflectionIn(const Piece& piece, double x) const;
    double curvatureIn(const Piece& piece, double x) const;
    double flatPoint(const Piece& piece, double from, double to) const;
    void addForces(const Piece& piece, std::size_t span, Extremes& result) const;
    void addDeflections(const Piece& piece, std::size_t span, Extremes& result) const;

    double m_length = 0.0;
    double m_uniform = 0.0;
    double m_leftReaction = 0.0;
    double m_rightReaction = 0.0;
    std::vector<Piece> m_pieces;
};

}
