#pragma once

#include "platform/posix/file_descriptor.h"

#include <sys/types.h>

namespace Tools::Platform {

// Sees to it that a child nobody waits for any more leaves no zombie when it ends. `descriptor` is
// the child's, if the kernel has such. A thread of the library waits for such children while there
// are any; from then on the library stays loaded.
void reapLater(pid_t child, FileDescriptor descriptor);

}
