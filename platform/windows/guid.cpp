#include "platform/guid.h"

#include <objbase.h>

namespace Tools::Platform {

Guid createGuid()
{
    Guid guid = {};
    ::CoCreateGuid(&guid);
    return guid;
}

}
