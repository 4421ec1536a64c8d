#pragma once

#include <vector>

namespace Tools::Platform {

// The variables as a child process is given them, with a final null. Made while no call of the
// library changes them; the texts themselves stay, the system never frees them.
std::vector<char*> copyEnvironment();

}
