#pragma once

#include "remarks.h"

#include <mdtools/smart_record.h>

#include <string>

namespace Girder {

// Reads the one record that makes up the text of a file. Unlike the record's own reader, which
// takes what it got when a text ends early or holds a malformed word, this one wants the whole of
// it. Otherwise the fault becomes an error remark on the entry and its line, and
// the result is false.
bool readRecord(const std::string& text, Tools::Smart::Record& record, Remarks& remarks);

// Writes the record to a file, numbers with as many digits as they need. False if the file cannot
// be written in full.
bool writeRecord(const Tools::Smart::Record& record, const std::string& file);

// Stores a text so that it reads back as it is, backslashes too.
void setText(Tools::Smart::Record& record, const std::string& name, const std::string& text);

}
