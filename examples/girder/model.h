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

struct Span {
    double length = 0.0;
    double stiffness = 0.0; // EI
    Loads loads;
};

// An end of the girder is hinged or fixed; over interior supports the girder runs through.
enum class Support { Hinged, Fixed, Interior };

// A girder from left to right: one support more than spans.
struct Model {
    std::string title;
    int stations = 0; // intervals per span in listings; 0: as the settings say
    std::vector<Span> spans;
    std::vector<Support> supports;
};

}
