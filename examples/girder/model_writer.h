#pragma once

#include "model.h"

#include <string>

namespace Girder {

// Stores a model in the current version of the format; comments are gone. False if the file cannot
// be written.
bool writeModel(const Model& model, const std::string& file);

}
