#include "platform/guid.h"

#include "platform/posix/retry.h"

#include <sys/random.h>

namespace Tools::Platform {

// Random, marked as such: version 4, variant 1 (RFC 4122, section 4.4).
Guid createGuid()
{
    Guid guid = {};
    retryInterrupted([&] { return ::getrandom(&guid, sizeof(guid), 0); });
    guid.Data3 = static_cast<std::uint16_t>((guid.Data3 & 0x0FFF) | 0x4000);
    guid.Data4[0] = static_cast<unsigned char>((guid.Data4[0] & 0x3F) | 0x80);
    return guid;
}

}
