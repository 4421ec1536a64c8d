#pragma once

#include "tools/registration_file.h"

namespace Tools::Registration {

// Makes all changes of a file, or none: if one cannot be made, those before it are taken back and a
// Fault says which one it was; false if the store refuses them together in the end. On Linux the
// changes of a hive are one transaction, which survives a kill as a whole or not at all; on Windows
// each is made at once.
bool importContent(const Content& content);

}
