#pragma once

#include "platform/open_file.h"

namespace Tools {

// Same length and same bytes. Stops at the first difference. False if one cannot be read.
bool haveSameBytes(const Platform::InputFile& a, const Platform::InputFile& b);

}
