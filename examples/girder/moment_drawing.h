#pragma once

#include "model.h"
#include "number_text.h"

#include <ostream>

namespace Girder {

// The moment line as a drawing in plain text: the girder from left to right, moments on the side
// that they pull at, as their sign says: negative ones above the axis, positive ones below.
void drawMoments(const Model& model, const NumberFormat& format, std::ostream& out);

}
