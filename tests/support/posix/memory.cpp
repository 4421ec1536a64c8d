#include "support/memory.h"

#include <malloc.h>

namespace MdToolsTest {

std::size_t memoryInUse()
{
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

}
