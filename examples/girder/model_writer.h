#pragma once

#include "model.h"

#include <string>

namespace Girder {

// Stores a model in the current version of the format; formulas have become numbers, and comments
// are gone. False if the file cannot be written.
bool writeModel(const Model& model, const std::string& file);

}
