#pragma once

#include <mdtools/smart_record.h>

namespace Tools::Smart {

// See Record::writeTo.
void writeTree(const Record& record, std::ostream& stream, int level,
               const std::string& indentUnit);
void writeTree(const Sequence& sequence, std::ostream& stream, int level,
               const std::string& indentUnit);

}
