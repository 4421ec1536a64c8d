#pragma once

namespace Girder {

// The standard error output is seen by somebody, not written to a file or another program.
bool isTerminal();

}
