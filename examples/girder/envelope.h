#pragma once

#include "solver.h"

#include <limits>
#include <vector>

namespace Girder {

// The least and the greatest value of a quantity while a train of axles runs over the girder, and
// where the first axle was then, from the left end of the girder. Of equal values the first one
// added stays, so that adding positions in parts, in their order, gives the same bits as adding
// them all at once.
struct Bounds {
    double minimum = std::numeric_limits<double>::infinity();
    double minimumAt = 0.0;
    double maximum = -std::numeric_limits<double>::infinity();
    double maximumAt = 0.0;

    bool operator==(const Bounds& other) const = default;

    void add(double value, double firstAxle);
    void add(const Bounds& later);
};

struct StationBounds {
    Bounds moment;
    Bounds shear; // on both sides of an axle at the station
    Bounds deflection;

    bool operator==(const StationBounds& other) const = default;

    void add(const StationBounds& later);
};

struct Envelope {
    std::vector<Bounds> reactions;
    std::vector<std::vector<StationBounds>> spans; // for each its stations

    bool operator==(const Envelope& other) const = default;

    // `later` holds positions after those of this one, for the same girder and stations.
    void add(const Envelope& later);
};

// Moves the model's train over the girder, whose own loads do not count, from the position where
// the first axle is on the left end to the one where the last axle is on the right end.
// Several threads may call it at once.
class EnvelopeSolver {
public:
    // The model must outlive it, and has one axle at least. `positions` is at least 2, `stations`
    // the number of intervals in each span.
    EnvelopeSolver(const Model& model, int stations, int positions);

    int positions() const { return m_positions; }
    // Where the first axle is, from the left end of the girder.
    double firstAxleAt(int position) const;

    Envelope makeEmpty() const;
    // Adds one position, 0 to positions() - 1, to an envelope of this solver.
    void add(int position, Envelope& envelope) const;

private:
    std::vector<Loads> loadsAt(double firstAxle) const;

    const Model& m_model;
    Solver m_solver;
    int m_stations;
    int m_positions;
    std::vector<double> m_starts; // of the spans
    double m_length = 0.0;        // of the girder
};

}
