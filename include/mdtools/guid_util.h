#pragma once

#include <mdtools/export.h>
#include <mdtools/nullable.h>
#include <mdtools/platform_types.h>

#include <string>

namespace Tools {

// Globally unique identifiers and their text form "{6F9619FF-8B86-D011-B42D-00CF4FC964FF}". May be
// called from any thread.
class MDTOOLS_API GuidUtil {
public:
    // A new one, from the system.
    static Guid create();

    // Braces, hyphens and upper-case hexadecimal digits.
    static std::string write(const Guid& guid);

    // Empty unless the whole text is what write() gives; lower-case digits are refused, so that one
    // identifier has one text.
    static mdt::Nullable<Guid> read(const std::string& text);
};

}
