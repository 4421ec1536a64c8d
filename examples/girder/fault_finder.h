#pragma once

#include <string>

namespace Girder {

// Where a text stops being a record.
struct Fault {
    std::string entry; // such as "spans[2].length"; empty before the first entry
    int line = 1;
    std::string text;
};

// Only for a text that was found not to be one record.
Fault findFault(const std::string& text);

}
