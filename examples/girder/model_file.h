#pragma once

#include "model.h"
#include "remarks.h"

#include <string>

namespace Girder {

// Reads a model file; README.md beside this header describes the format. Everything that is wrong
// with it becomes a remark. The model can be computed unless there is an error among the remarks.
Model readModel(const std::string& file, Remarks& remarks);

}
