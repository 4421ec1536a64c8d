#pragma once

#include <mdtools/export.h>

#include <string>

namespace Tools {

// One-character texts (and the empty one) for composing paths, lists and lines. They are ASCII,
// so that they are the same in every code page. They are ready before any other code of the library
// runs and never change; any thread may read them.
class MDTOOLS_API C {
public:
    static const std::string Asterisk;
    static const std::string Backslash;
    static const std::string Blank;
    static const std::string Colon;
    static const std::string Comma;
    static const std::string Dash;
    static const std::string Dot;
    static const std::string Empty;
    static const std::string Semicolon;
    static const std::string Slash;
    static const std::string Underscore;
    static const std::string Zero;
};

}
