#include <mdtools/constants.h>

// Where the compiler can build a std::string at compile time (the build tries it) it checks that
// these are constants; elsewhere they are initialised at load, and no other initialiser of the
// library uses them.
#if defined(MDTOOLS_HAS_CONSTINIT_STRING)
#define MDTOOLS_CONSTANT constinit
#else
#define MDTOOLS_CONSTANT
#endif

namespace Tools {

MDTOOLS_CONSTANT const std::string C::Asterisk = "*";
MDTOOLS_CONSTANT const std::string C::Backslash = "\\";
MDTOOLS_CONSTANT const std::string C::Blank = " ";
MDTOOLS_CONSTANT const std::string C::Colon = ":";
MDTOOLS_CONSTANT const std::string C::Comma = ",";
MDTOOLS_CONSTANT const std::string C::Dash = "-";
MDTOOLS_CONSTANT const std::string C::Dot = ".";
MDTOOLS_CONSTANT const std::string C::Empty = "";
MDTOOLS_CONSTANT const std::string C::Semicolon = ";";
MDTOOLS_CONSTANT const std::string C::Slash = "/";
MDTOOLS_CONSTANT const std::string C::Underscore = "_";
MDTOOLS_CONSTANT const std::string C::Zero = "0";

}
