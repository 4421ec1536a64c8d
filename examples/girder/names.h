#pragma once

#include "model.h"

#include <string>

namespace Girder {

// The word for a kind of support in model files and listings.
std::string nameOf(Support support);

// False if `name` is none of these words.
bool supportFromName(const std::string& name, Support& support);

}
