#pragma once

#include "results.h"

#include <string>

namespace Girder {

// Stores the results as a record, in the units of the model. False if the file cannot be written.
bool writeResults(const Results& results, const std::string& file);

}
