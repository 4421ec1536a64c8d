#pragma once

namespace Girder {

// The label of the program's detailed traces.
constexpr const char* TraceLabel = "girder";

}
