#pragma once

#include "platform/processors.h"

#include <string>
#include <vector>

namespace Tools::Platform {

// The processors that are online, as the kernel describes them in the files below `root`
// ("/sys/devices/system"). `fallbackCount` processors, each a core of one package, are assumed
// where the files are missing. Numbers above 63 do not fit the masks; there only the number of bits
// is right.
std::vector<ProcessorRecord> readTopology(const std::string& root, int fallbackCount);

}
