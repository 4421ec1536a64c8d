#pragma once

#include "solver.h"

#include <vector>

namespace Girder {

// Values at a distance from the left end of a span.
struct Station {
    double x = 0.0;
    double moment = 0.0;
    double shear = 0.0;
    double deflection = 0.0;
};

struct SupportResult {
    double x = 0.0; // from the left end of the girder
    Support kind = Support::Hinged;
    double reaction = 0.0;
    double moment = 0.0;
};

struct SpanResult {
    double start = 0.0; // of the span, from the left end of the girder
    double length = 0.0;
    // What the reinforcement at the underside can bear, and what it has to; 0 without steel.
    double capacity = 0.0;
    double greatestMoment = 0.0;
    std::vector<Station> stations;
};

// What is shown and stored of a computed girder.
struct Results {
    std::string title;
    std::vector<SupportResult> supports;
    std::vector<SpanResult> spans;
    Extremes extremes;

    // False if some number of the model was too large or too small to compute with.
    bool isFinite() const;
};

// `stations` intervals in each span, at least one.
Results computeResults(const Model& model, int stations);

}
