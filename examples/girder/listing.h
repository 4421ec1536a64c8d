#pragma once

#include "number_text.h"
#include "results.h"

#include <ostream>

namespace Girder {

// The results as tables to read: moments in kNm, forces in kN, lengths in m, deflections in mm.
void printListing(const Results& results, const NumberFormat& format, std::ostream& out);

}
