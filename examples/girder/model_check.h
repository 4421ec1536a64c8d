#pragma once

#include "model.h"
#include "remarks.h"

namespace Girder {

// Warns of what can be computed but is likely to be a slip. For a model without errors.
void checkModel(const Model& model, Remarks& remarks);

}
