#pragma once

#include <string>
#include <vector>

namespace Girder {

// Units everywhere: m, kN, kNm, kN/m, kNm2. Loads and deflections count downward, reactions upward,
// a moment that pulls at the underside is positive.

// A single force at a distance from the left end of its span.
struct PointLoad {
    double position = 0.0;
    double force = 0.0;
};

struct Loads {
    double uniform = 0.0;
    std::vector<PointLoad> points;
};

// A value of the bending stiffness EI at a distance from the left end of its span.
struct StiffnessPoint {
    double position = 0.0;
    double value = 0.0;
};

struct Span {
    double length = 0.0;
    // One point, or more in ascending order for a haunched span: straight lines between them.
    std::vector<StiffnessPoint> stiffness;
    Loads loads;
    // Of a concrete girder: the steel at the underside in cm2 and its depth below the upper edge in
    // m. Without steel: 0.
    double reinforcement = 0.0;
    double depth = 0.0;
};

// An end of the girder is hinged or fixed; over interior supports the girder runs through.
enum class Support { Hinged, Fixed, Interior };

// An axle of a train, at a distance after the first one.
struct Axle {
    double distance = 0.0;
    double force = 0.0;
};

// A girder from left to right: one support more than spans.
struct Model {
    std::string title;
    int stations = 0; // intervals per span in listings; 0: as the settings say
    std::vector<Span> spans;
    std::vector<Support> supports;
    std::vector<Axle> train; // may be empty
};

}
