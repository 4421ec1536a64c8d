#pragma once

#include "platform/thread_pool.h"

namespace Tools {

// A pool with the numbers of threads that all pools of the library have.
Platform::Pool* createSizedPool();

}
