#pragma once

#include "results.h"

#include <string>

namespace Girder {

// Stores the results as lines of labelled values, for the family's programs that read such files.
// False if the file cannot be written.
bool writeLabelledResults(const Results& results, const std::string& file);

}
