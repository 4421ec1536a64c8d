#pragma once

#include "envelope.h"
#include "number_text.h"

#include <ostream>
#include <string>

namespace Girder {

// The envelope of a model's train as tables to read, in the units of other listings.
void printEnvelope(const Model& model, const Envelope& envelope, const NumberFormat& format,
                   std::ostream& out);

// Stores it as a record, in the units of the model, with the positions of the first axle. False if
// the file cannot be written.
bool writeEnvelope(const Model& model, const Envelope& envelope, const std::string& file);

// False if some number was too large or too small to compute with.
bool isFinite(const Envelope& envelope);

}
