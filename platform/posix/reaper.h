#pragma once

#include <sys/types.h>

namespace Tools::Platform {

// Sees to it that a child nobody waits for any more leaves no zombie when it ends. Takes over
// `descriptor` (the child's, or -1). A thread of the library waits for such children while there
// are any; from then on the library stays loaded.
void reapLater(pid_t child, int descriptor);

}
